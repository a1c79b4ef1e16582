// The conformance tests on SQLite: a database as the suite makes it, and one made by hand with a rollback
// journal.
#include "platform/adodb/engines/sqlite/embedded/provider.hpp"
#include "tests/adodb/conformance/conformance.hpp"
#include "tests/support/sqlite_database.hpp"

namespace orvane_test {
namespace {

class SqliteUnderTest : public EngineUnderTest {
 public:
  explicit SqliteUnderTest(bool wal) : file_(folder_.Path() / "test.sqlite", wal) {}

  std::shared_ptr<ADODB::engine::Provider> Provider() override {
    return ADODB::sqlite::MakeProvider(folder_.Path());
  }
  std::string ConnectionString() const override {
    return "Provider=SQLite;Data Source=test.sqlite;Timeout=0";
  }
  std::string UnreachableConnectionString() const override {
    return "Provider=SQLite;Data Source=no\\such.sqlite";
  }
  std::string_view Name() const override { return "sqlite"; }
  std::string BooleanLiteral(bool value) const override { return value ? "1" : "0"; }

  std::string Declaration(ColumnKind kind) const override {
    switch (kind) {
      case ColumnKind::Generated:
      case ColumnKind::Key:
        return "INTEGER PRIMARY KEY";
      case ColumnKind::TextKey:
        return "VARCHAR(50) PRIMARY KEY";
      case ColumnKind::Integer:
        return "INTEGER";
      case ColumnKind::BigInteger:
        return "BIGINT";
      case ColumnKind::Boolean:
        return "BIT";
      case ColumnKind::DateTime:
        return "DATETIME";
      case ColumnKind::Double:
        return "REAL";
      case ColumnKind::Single:
        return "FLOAT";
      case ColumnKind::Decimal:
        return "NUMERIC(20,10)";
      case ColumnKind::FixedText:
        return "CHAR(10)";
      case ColumnKind::Bytes:
        return "BLOB";
      case ColumnKind::Text:
        return "VARCHAR(100)";
      case ColumnKind::LongText:
        return "TEXT";
    }
    return {};
  }

 private:
  TemporaryFolder folder_;
  SqliteDatabase file_;
};

INSTANTIATE_TEST_SUITE_P(
    Engines, Conformance,
    testing::Values(EngineMaker{"SQLite", [] { return std::make_unique<SqliteUnderTest>(true); }},
                    EngineMaker{"SQLiteWithRollbackJournal",
                                [] { return std::make_unique<SqliteUnderTest>(false); }}),
    EngineName);

}  // namespace
}  // namespace orvane_test
