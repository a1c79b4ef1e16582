#include "tests/servers/server_environment.hpp"

#include "platform/adodb/odbc/provider.hpp"
#include "platform/adodb/registration.hpp"

namespace orvane_test {

ServerEnvironment::ServerEnvironment(const std::string& server)
    : ServerEnvironment(Server::Shared(server), server) {}

ServerEnvironment::ServerEnvironment(const Server& own, const std::string& server) : database(own, server) {
  database.RunSchemaFile(server + ".sql");
  auto actual = std::make_shared<automation::ClassTable>();
  ADODB::RegisterClasses(*actual, {ADODB::odbc::MakeProvider()});
  adodb = RegisterWatchedAdodb(runtime.classes, std::move(actual));
  configuration->connectionStrings[{"Orvane", "Orvane"}] = database.ConnectionString();
}

std::vector<std::string> ServerEnvironment::Rows(const std::string& sql) const {
  const auto session = database.Connect();
  const auto rows = session->Query(sql, {});
  std::vector<std::string> result;
  while (rows->Next()) {
    std::string row;
    for (std::size_t i = 0; i < rows->Columns().size(); ++i) {
      const automation::Variant value = rows->Value(i);
      row += (i == 0 ? "" : "|") + (value.IsNull() ? std::string("NULL") : automation::ToText(value));
    }
    result.push_back(std::move(row));
  }
  return result;
}

}  // namespace orvane_test
