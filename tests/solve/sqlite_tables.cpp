#include "platform/adodb/engines/sqlite/embedded/provider.hpp"
#include "tests/solve/whole_suite_test.hpp"
#include "tests/support/sqlite_database.hpp"

namespace orvane_test {
namespace {

class SqliteTables : public SuiteTables {
 public:
  SqliteTables() {
    database_.Run(TemporaryFolder::Read(std::filesystem::path(ORVANE_SOURCE_DIR) / "schema" / "sqlite.sql"));
  }
  std::shared_ptr<ADODB::engine::Provider> Provider() override {
    return ADODB::sqlite::MakeProvider(folder_.Path());
  }
  std::string ConnectionString() const override { return database_.ConnectionString(); }

 private:
  TemporaryFolder folder_;
  SqliteDatabase database_{folder_.Path() / "orvane.sqlite"};
};

}  // namespace

std::vector<SuiteTablesMaker> SuiteTablesMakers() {
  return {{"SQLite", [] { return std::make_unique<SqliteTables>(); }}};
}

}  // namespace orvane_test
