#include "platform/adodb/engines/sqlserver/dialect.hpp"

#include "platform/adodb/sql/collation_key.hpp"
#include "platform/adodb/sql/engine_error.hpp"

namespace ADODB::engine {
namespace {

// Who else holds such a lock is shown to administrators only.
constexpr Dialect::SessionLockTexts kSessionLock = {
    .take =
        "SET NOCOUNT ON; DECLARE @name nvarchar(255) = N'orvane suite ' + DB_NAME(); DECLARE @answer int;"
        " EXEC @answer = sp_getapplock @Resource = @name, @LockMode = 'Exclusive',"
        " @LockOwner = 'Session', @LockTimeout = 0;"
        " SELECT CASE WHEN @answer >= 0 THEN 1 ELSE 0 END",
    .isHeld =
        "SELECT CASE WHEN APPLOCK_MODE('public', N'orvane suite ' + DB_NAME(), 'Session') = "
        "'Exclusive' THEN 1 ELSE 0 END",
    .holder = {},
    .introduce = {},
};

// The suite's own engine: only what the cursors compose needs a spelling here.
class SqlServer : public Dialect {
 public:
  std::string_view Name() const override { return "SQL Server"; }
  const SessionLockTexts* SessionLock() const override { return &kSessionLock; }

  std::string_view BoundLockWaits() const override { return "SET LOCK_TIMEOUT 10000"; }
  std::string Savepoint(const std::string& name) const override { return "SAVE TRANSACTION " + name; }
  std::string RollbackToSavepoint(const std::string& name) const override {
    return "ROLLBACK TRANSACTION " + name;
  }
  std::string ReleaseSavepoint(const std::string&) const override { return {}; }
  bool MeansLocked(const automation::Error& error) const override {
    constexpr std::int32_t kDeadlock = 1205;
    constexpr std::int32_t kWaitedTooLong = 1222;
    return error.NativeCode() == kDeadlock || error.NativeCode() == kWaitedTooLong;
  }

  bool TakesTextUnchanged() const override { return true; }

  std::string QuotedName(std::string_view name) const override { return Enclosed(name, '[', ']'); }

  std::string Limited(std::string_view list, std::string_view rest, std::size_t count) const override {
    std::string sql = "SELECT TOP (" + std::to_string(count) + ") ";
    return sql.append(list).append(rest);
  }

  std::string InsertReturning(std::string_view table, const std::vector<std::string>& columns,
                              const std::vector<std::string>& returned) const override {
    return "INSERT INTO " + std::string(table) + InsertedNames(columns) +
           Listed(" OUTPUT ", "INSERTED.", returned) + InsertedValues(columns);
  }

  std::string LockedSelect(std::string_view list, std::string_view table,
                           std::string_view where) const override {
    std::string sql = "SELECT ";
    sql.append(list).append(" FROM ").append(table).append(" WITH (UPDLOCK) ").append(where);
    return sql;
  }

  // INTERSECT takes NULL for equal to NULL. Strings are compared by their bytes, since "=" ignores trailing
  // spaces in every collation; dates to the millisecond, since the older type has none between.
  std::string StillReads(const std::string& column, ColumnType type) const override {
    const auto same = [](const std::string& left, const std::string& right) {
      return "EXISTS (SELECT " + left + " INTERSECT SELECT " + right + ")";
    };
    switch (type) {
      case ColumnType::Boolean:
      case ColumnType::Integer:
        return same(column, "?");
      case ColumnType::Decimal:
      case ColumnType::Double:
        return same("CAST(" + column + " AS float)", "CAST(? AS float)");
      case ColumnType::DateTime:
        return same("CAST(" + column + " AS datetime2(3))", "CAST(? AS datetime2(3))");
      case ColumnType::Text:
        return same("CAST(CAST(" + column + " AS nvarchar(max)) AS varbinary(max))",
                    "CAST(CAST(? AS nvarchar(max)) AS varbinary(max))");
      case ColumnType::Binary:
        break;
    }
    return same("CONVERT(varchar(max), CAST(" + column + " AS varbinary(max)), 2)", "?");
  }

  std::string DeleteOne(std::string_view table, std::string_view condition) const override {
    std::string sql = "DELETE TOP (1) FROM ";
    return sql.append(table).append(" WHERE ").append(condition);
  }
  std::string UpdateOne(std::string_view table, std::string_view assignments,
                        std::string_view condition) const override {
    std::string sql = "UPDATE TOP (1) ";
    return sql.append(table).append(" SET ").append(assignments).append(" WHERE ").append(condition);
  }

  // Trailing spaces never count; a collation says "_CI" when case does not either, and the binary ones end in
  // _BIN or _BIN2.
  std::string ComparisonKey(std::string_view text, const Column& column) const override {
    const bool ignoresCase = column.collation.find("_CI") != std::string::npos;
    std::string key = ignoresCase ? WithoutCase(text) : std::string(text);
    while (!key.empty() && key.back() == ' ') key.pop_back();
    return key;
  }

  automation::Error SyntaxError(std::string_view near) const override {
    return EngineError("MSDASQL", "Incorrect syntax near '" + std::string(near) + "'.", "42000", 102);
  }
};

}  // namespace

const Dialect& SqlServerDialect() {
  static const SqlServer dialect;
  return dialect;
}

}  // namespace ADODB::engine
