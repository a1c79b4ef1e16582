#include "platform/adodb/engines/sqlite/dialect.hpp"

#include "platform/adodb/sql/engine_error.hpp"
#include "platform/adodb/sql/tokens.hpp"

namespace ADODB::engine {
namespace {

class Sqlite : public Dialect {
 public:
  std::string_view Name() const override { return "SQLite"; }

  std::string DaysLater(std::string_view days, std::string_view moment) const override {
    return Call("orvane_adddays", days, moment);
  }

  std::string NullReplaced(std::string_view value, std::string_view replacement) const override {
    return Call("ifnull", value, replacement);
  }

  std::string Joined(const std::vector<std::string>& operands) const override {
    return Chained(operands, " || ");
  }

  // A transaction has the whole database to itself.
  std::string LockedSelect(std::string_view list, std::string_view table,
                           std::string_view where) const override {
    std::string sql = "SELECT ";
    return sql.append(list).append(" FROM ").append(table).append(" ").append(where);
  }

  // A column may hold a value of any type, and a date or a Boolean may be written in several ways.
  std::string StillReads(const std::string& column, ColumnType type) const override {
    switch (type) {
      case ColumnType::Boolean:
        return "orvane_asboolean(" + column + ") IS ?";
      case ColumnType::DateTime:
        return "orvane_asdate(" + column + ") IS ?";
      case ColumnType::Binary:
        return "CASE WHEN typeof(" + column + ") IN ('blob','text') THEN hex(" + column + ") ELSE " + column +
               " END IS ?";
      case ColumnType::Integer:
      case ColumnType::Decimal:
      case ColumnType::Double:
      case ColumnType::Text:
        break;
    }
    return "CASE WHEN typeof(" + column + ") = 'blob' THEN CAST(" + column + " AS TEXT) ELSE " + column +
           " END IS ? COLLATE BINARY";
  }

  // As orvane_asdate gives a moment.
  automation::Variant ComparedValue(const automation::Variant& value, ColumnType type) const override {
    const auto* moment =
        type == ColumnType::DateTime ? std::get_if<automation::DateTime>(&value.Get()) : nullptr;
    return moment == nullptr ? value : moment->UnixMicroseconds();
  }

  // Neither a literal nor a parameter has an affinity of its own.
  bool ComparesBoundValuesAsLiterals() const override { return true; }

  std::string Timestamp(std::string_view text) const override { return "'" + std::string(text) + "'"; }

  // Dates are texts here, and any other text or number compares with one as well.
  std::string ComparedMoment(std::string_view value) const override {
    return std::string("orvane_moment(").append(value).append(")");
  }

  // The built-in collations: BINARY, NOCASE (ASCII letters only) and RTRIM (trailing spaces only).
  std::string ComparisonKey(std::string_view text, const Column& column) const override {
    if (EqualsIgnoringAsciiCase(column.collation, "NOCASE")) return base::ToAsciiLower(text);
    const bool trims = EqualsIgnoringAsciiCase(column.collation, "RTRIM");
    return std::string(trims ? text.substr(0, text.find_last_not_of(' ') + 1) : text);
  }

  automation::Error SyntaxError(std::string_view near) const override {
    const std::string message =
        near.empty() ? "incomplete input" : "near \"" + std::string(near) + "\": syntax error";
    return EngineError("SQLite", message, "42000", 1);
  }
};

}  // namespace

const Dialect& SqliteDialect() {
  static const Sqlite dialect;
  return dialect;
}

}  // namespace ADODB::engine
