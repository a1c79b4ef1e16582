#include "platform/adodb/engines/postgresql/dialect.hpp"

#include <algorithm>
#include <charconv>
#include <variant>

#include "platform/adodb/sql/engine_error.hpp"
#include "platform/base/text.hpp"

namespace ADODB::engine {
namespace {

// The key is made of the schema as well, as two suites may share a database.
constexpr Dialect::SessionLockTexts kSessionLock = {
    .take =
        "SELECT CASE WHEN pg_try_advisory_lock(hashtextextended('orvane suite ' || current_database()"
        " || '.' || coalesce(current_schema(), ''), 0)) THEN 1 ELSE 0 END",
    .isHeld =
        "SELECT count(*) FROM pg_catalog.pg_locks l"
        " JOIN pg_catalog.pg_database d ON d.oid = l.database AND d.datname = current_database()"
        " WHERE l.locktype = 'advisory' AND l.granted AND l.objsubid = 1 AND l.pid = pg_backend_pid()"
        " AND ((CAST(l.classid AS bigint) << 32) | CAST(l.objid AS bigint)) ="
        " hashtextextended('orvane suite ' || current_database() || '.' || coalesce(current_schema(), "
        "''), 0)",
    .holder =
        "SELECT 'database session ' || l.pid || coalesce(' of ' || a.usename, '')"
        " || coalesce(' from ' || host(a.client_addr), '')"
        " || coalesce(', ' || nullif(a.application_name, ''), '')"
        " || coalesce(', since ' || to_char(a.backend_start AT TIME ZONE 'UTC',"
        " 'YYYY-MM-DD HH24:MI:SS') || ' UTC', '')"
        " FROM pg_catalog.pg_locks l"
        " JOIN pg_catalog.pg_database d ON d.oid = l.database AND d.datname = current_database()"
        " LEFT JOIN pg_catalog.pg_stat_activity a ON a.pid = l.pid"
        " WHERE l.locktype = 'advisory' AND l.granted AND l.objsubid = 1"
        " AND ((CAST(l.classid AS bigint) << 32) | CAST(l.objid AS bigint)) ="
        " hashtextextended('orvane suite ' || current_database() || '.' || coalesce(current_schema(), "
        "''), 0)",
    .introduce = "SELECT set_config('application_name', ?, false)",
};

class PostgreSql : public Dialect {
 public:
  std::string_view Name() const override { return "PostgreSQL"; }
  const SessionLockTexts* SessionLock() const override { return &kSessionLock; }

  std::string_view BoundLockWaits() const override { return "SET lock_timeout = '10s'"; }
  std::string BoundStatements(std::chrono::seconds longest) const override {
    return "SET statement_timeout = '" + std::to_string(longest.count()) + "s'";
  }

  std::string DaysLater(std::string_view days, std::string_view moment) const override {
    std::string sql = "(";
    return sql.append(moment).append(" + (").append(days).append(") * interval '1 day')");
  }

  std::string NullReplaced(std::string_view value, std::string_view replacement) const override {
    return Call("coalesce", value, replacement);
  }

  std::string Joined(const std::vector<std::string>& operands) const override {
    return Chained(operands, " || ");
  }

  bool ReturnsDeletedRows() const override { return true; }

  // A text without a type of its own is sent, and takes the type of what it is compared with, as a literal
  // does.
  bool ComparesBoundValuesAsLiterals() const override { return true; }
  bool PreparesOnTheServer() const override { return true; }
  std::string_view NumberParameter() const override { return "CAST(? AS integer)"; }

  // A string is compared as the engine writes it: so is a type that has no equality of its own, and the
  // spaces of a CHAR count. Numbers are compared as the double that their text gives, as the driver reads
  // them.
  std::string StillReads(const std::string& column, ColumnType type) const override {
    switch (type) {
      case ColumnType::Boolean:
      case ColumnType::Integer:
      case ColumnType::DateTime:
        return column + " IS NOT DISTINCT FROM ?";
      case ColumnType::Decimal:
      case ColumnType::Double:
        return "CAST(CAST(" + column +
               " AS text) AS double precision) IS NOT DISTINCT FROM CAST(? AS double precision)";
      case ColumnType::Text:
        return "CASE WHEN " + column + " IS NOT NULL THEN format('%s', " + column +
               ") END IS NOT DISTINCT FROM ?";
      case ColumnType::Binary:
        break;
    }
    return "upper(encode(" + column + ", 'hex')) IS NOT DISTINCT FROM ?";
  }

  // The driver rounds a double that it is given to 15 digits.
  automation::Variant ComparedValue(const automation::Variant& value, ColumnType) const override {
    const double* number = std::get_if<double>(&value.Get());
    if (number == nullptr) return value;
    char digits[32];
    const auto end = std::to_chars(digits, digits + sizeof digits, *number).ptr;
    return std::string(digits, end);
  }

  // A typed literal: its meaning does not hang on the session's DateStyle.
  std::string Timestamp(std::string_view text) const override {
    return "timestamp '" + std::string(text) + "'";
  }

  // The engine folds unquoted names to lower case, the suite's names are in upper case. A name with an
  // upper-case letter was quoted when it was made, and stands as it is.
  bool FoldsNames() const override { return true; }
  std::string ShownName(std::string_view reported) const override {
    const bool wasQuoted =
        std::any_of(reported.begin(), reported.end(), [](char c) { return base::AsciiLower(c) != c; });
    return wasQuoted ? std::string(reported) : base::ToAsciiUpper(reported);
  }

  // The engine's collations order texts, but only equal bytes are equal to it.
  std::string ComparisonKey(std::string_view text, const Column&) const override { return std::string(text); }

  automation::Error SyntaxError(std::string_view near) const override {
    const std::string message = near.empty() ? "ERROR: syntax error at end of input"
                                             : "ERROR: syntax error at or near \"" + std::string(near) + "\"";
    return EngineError("MSDASQL", message, "42601", 1);
  }
};

}  // namespace

const Dialect& PostgreSqlDialect() {
  static const PostgreSql dialect;
  return dialect;
}

}  // namespace ADODB::engine
