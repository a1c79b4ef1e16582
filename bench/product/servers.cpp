#include "bench/product/servers.hpp"

#include <stdexcept>

#include "platform/adodb/odbc/provider.hpp"
#include "tests/servers/server_database.hpp"

namespace orvane_bench {

BenchServer::BenchServer(const std::string& name, bool durable)
    : name_(name),
      server_(std::make_unique<orvane_test::Server>(orvane_test::Server::StartOwn(name, durable))) {}

BenchServer::~BenchServer() = default;

BenchDatabase::BenchDatabase(const BenchServer& server)
    : server_(server.name_),
      database_(std::make_unique<orvane_test::ServerDatabase>(*server.server_, server.name_)) {
  database_->RunSchemaFile(server_ + ".sql");
}

BenchDatabase::~BenchDatabase() = default;

std::string BenchDatabase::ConnectionString() const {
  return database_->ConnectionString();
}

std::string BenchDatabase::Setting(const std::string& keyword) const {
  return ADODB::engine::ConnectionString::Parse(ConnectionString()).Value(keyword).value_or("");
}

void BenchDatabase::Execute(const std::string& sql) const {
  database_->Execute(sql);
}

std::int64_t BenchDatabase::Number(const std::string& sql) const {
  const auto session = database_->Connect();
  const auto rows = session->Query(sql, {});
  if (!rows->Next()) throw std::runtime_error("no row: " + sql);
  return automation::ToInt64(rows->Value(0));
}

void BenchDatabase::Analyse(const std::string& table) const {
  Execute(server_ == "mariadb" ? "ANALYZE TABLE " + table : "VACUUM ANALYZE " + table);
}

void OpenPhysicalConnection(const std::string& connectionString) {
  ADODB::odbc::MakeProvider()->Connect(ADODB::engine::ConnectionString::Parse(connectionString));
}

}  // namespace orvane_bench
