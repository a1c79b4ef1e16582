#include "platform/adodb/odbc/provider.hpp"
#include "tests/servers/server_database.hpp"
#include "tests/solve/whole_suite_test.hpp"

namespace orvane_test {
namespace {

class ServerTables : public SuiteTables {
 public:
  explicit ServerTables(const std::string& server) : database_(server) {
    database_.RunSchemaFile(server + ".sql");
  }
  std::shared_ptr<ADODB::engine::Provider> Provider() override { return ADODB::odbc::MakeProvider(); }
  std::string ConnectionString() const override { return database_.ConnectionString(); }

 private:
  ServerDatabase database_;
};

}  // namespace

std::vector<SuiteTablesMaker> SuiteTablesMakers() {
  return {{"PostgreSQL", [] { return std::make_unique<ServerTables>("postgresql"); }},
          {"MariaDB", [] { return std::make_unique<ServerTables>("mariadb"); }}};
}

}  // namespace orvane_test
