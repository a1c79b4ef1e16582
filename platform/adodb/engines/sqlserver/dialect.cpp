#include "platform/adodb/engines/sqlserver/dialect.hpp"

#include "platform/adodb/sql/collation_key.hpp"
#include "platform/adodb/sql/engine_error.hpp"

namespace ADODB::engine {
namespace {

// The suite's own engine: only what the cursor engine composes needs a spelling here.
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

class SqlServer : public Dialect {
 public:
  std::string_view Name() const override { return "SQL Server"; }
  const SessionLockTexts* SessionLock() const override { return &kSessionLock; }

  bool TakesTextUnchanged() const override { return true; }

  std::string DaysLater(std::string_view days, std::string_view moment) const override {
    std::string sql = "dateadd(d,";
    return sql.append(days).append(",").append(moment).append(")");
  }

  std::string NullReplaced(std::string_view value, std::string_view replacement) const override {
    std::string sql = "isnull(";
    return sql.append(value).append(",").append(replacement).append(")");
  }

  std::string Joined(const std::vector<std::string>& texts) const override {
    std::string sql = "(";
    for (std::size_t i = 0; i < texts.size(); ++i) sql += (i == 0 ? "" : " + ") + texts[i];
    return sql + ")";
  }

  std::string Timestamp(std::string_view text) const override { return "{ts '" + std::string(text) + "'}"; }

  std::string QuotedName(std::string_view name) const override {
    std::string quoted = "[";
    for (const char c : name) quoted.append(c == ']' ? 2u : 1u, c);
    return quoted + ']';
  }

  std::string Limited(std::string_view list, std::string_view rest, std::size_t count) const override {
    std::string sql = "SELECT TOP (" + std::to_string(count) + ") ";
    return sql.append(list).append(rest);
  }

  std::string InsertReturning(std::string_view table, const std::vector<std::string>& columns,
                              const std::vector<std::string>& returned) const override {
    std::string names;
    std::string marks;
    for (std::size_t i = 0; i < columns.size(); ++i) {
      names += (i == 0 ? " (" : ",") + QuotedName(columns[i]);
      marks += i == 0 ? "?" : ",?";
    }
    std::string sql = "INSERT INTO ";
    sql.append(table).append(names).append(columns.empty() ? "" : ")");
    for (std::size_t i = 0; i < returned.size(); ++i) {
      sql += (i == 0 ? " OUTPUT INSERTED." : ",INSERTED.") + QuotedName(returned[i]);
    }
    return columns.empty() ? sql + " DEFAULT VALUES" : sql + " VALUES (" + marks + ")";
  }

  std::string LockedSelect(std::string_view list, std::string_view table,
                           std::string_view where) const override {
    std::string sql = "SELECT ";
    sql.append(list).append(" FROM ").append(table).append(" WITH (UPDLOCK) ").append(where);
    return sql;
  }

  // INTERSECT takes NULL for equal to NULL. Texts are compared by their bytes, since "=" ignores trailing
  // blanks in every collation; dates to the millisecond, since the older type has none between.
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

  // Trailing blanks never count; a collation says "_CI" when case does not either, and the binary ones end in
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
