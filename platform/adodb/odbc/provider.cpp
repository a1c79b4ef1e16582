#include "platform/adodb/odbc/provider.hpp"

#include <array>
#include <string>
#include <utility>

#include "platform/adodb/engines/table.hpp"
#include "platform/adodb/odbc/connection.hpp"
#include "platform/adodb/odbc/driver.hpp"
#include "platform/adodb/odbc/error.hpp"
#include "platform/adodb/odbc/handle.hpp"
#include "platform/adodb/odbc/unicode.hpp"
#include "platform/adodb/sql/tokens.hpp"

namespace ADODB::odbc {
namespace {

EnvironmentHandle MakeEnvironment() {
  SQLHANDLE raw = nullptr;
  if (!Succeeded(SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &raw))) {
    Raise({.sqlState = "HY001", .nativeCode = 0, .message = "The ODBC driver manager cannot be started."});
  }
  EnvironmentHandle environment(raw);
  SQLSetEnvAttr(raw, SQL_ATTR_ODBC_VERSION, AsPointer(SQL_OV_ODBC3), 0);
  return environment;
}

class OdbcProvider : public engine::Provider {
 public:
  explicit OdbcProvider(engine::Clock clock) : environment_(MakeEnvironment()), clock_(std::move(clock)) {}

  std::string_view Name() const override { return "MSDASQL"; }
  bool ReachesServers() const override { return true; }

  std::unique_ptr<engine::Session> Connect(const engine::ConnectionString& given) override {
    return std::make_unique<Connection>(environment_, ForDriver(given, EngineBehind(given)), clock_);
  }

 private:
  const engine::EngineEntry* EngineBehind(const engine::ConnectionString& given) const {
    if (const auto driver = given.Value("Driver")) return engine::EngineOfDriver(*driver);
    const auto source = given.Value("DSN");
    return source ? engine::EngineOfDriver(DriverOfDataSource(*source)) : nullptr;
  }

  // What the driver manager's list of data sources says; empty for one that it does not know.
  std::string DriverOfDataSource(std::string_view wanted) const {
    for (SQLUSMALLINT direction = SQL_FETCH_FIRST;; direction = SQL_FETCH_NEXT) {
      std::array<SQLWCHAR, 256> name{};
      std::array<SQLWCHAR, 256> driver{};
      SQLSMALLINT nameLength = 0;
      SQLSMALLINT driverLength = 0;
      const SQLRETURN status =
          SQLDataSourcesW(environment_.Get(), direction, name.data(), static_cast<SQLSMALLINT>(name.size()),
                          &nameLength, driver.data(), static_cast<SQLSMALLINT>(driver.size()), &driverLength);
      if (!Succeeded(status)) return {};
      if (engine::EqualsIgnoringAsciiCase(ToUtf8(name.data(), static_cast<std::size_t>(nameLength)),
                                          wanted)) {
        return ToUtf8(driver.data(), static_cast<std::size_t>(driverLength));
      }
    }
  }

  EnvironmentHandle environment_;
  const engine::Clock clock_;
};

}  // namespace

std::shared_ptr<engine::Provider> MakeProvider(engine::Clock clock) {
  return std::make_shared<OdbcProvider>(std::move(clock));
}

}  // namespace ADODB::odbc
