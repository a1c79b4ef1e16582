#include "platform/adodb/sql/dialect.hpp"

namespace ADODB::engine {

std::string Dialect::Call(std::string_view name, std::string_view first, std::string_view second) {
  std::string sql(name);
  return sql.append("(").append(first).append(",").append(second).append(")");
}

std::string Dialect::Chained(const std::vector<std::string>& operands, std::string_view sign) {
  std::string sql;
  for (const std::string& operand : operands) sql.append(sql.empty() ? "(" : sign).append(operand);
  return sql + ")";
}

std::string Dialect::DaysLater(std::string_view days, std::string_view moment) const {
  return Call("dateadd", "d," + std::string(days), moment);
}

std::string Dialect::NullReplaced(std::string_view value, std::string_view replacement) const {
  return Call("isnull", value, replacement);
}

std::string Dialect::Joined(const std::vector<std::string>& operands) const {
  return Chained(operands, " + ");
}

std::string Dialect::Timestamp(std::string_view text) const {
  return "{ts '" + std::string(text) + "'}";
}

// The closing character is doubled inside.
std::string Dialect::Enclosed(std::string_view name, char opening, char closing) {
  std::string quoted(1, opening);
  for (const char c : name) quoted.append(c == closing ? 2u : 1u, c);
  return quoted + closing;
}

std::string Dialect::QuotedName(std::string_view name) const {
  return Enclosed(name, '"', '"');
}

std::string Dialect::Limited(std::string_view list, std::string_view rest, std::size_t count) const {
  std::string sql = "SELECT ";
  return sql.append(list).append(rest).append(" LIMIT ").append(std::to_string(count));
}

std::string Dialect::LockedSelect(std::string_view list, std::string_view table,
                                  std::string_view where) const {
  std::string sql = "SELECT ";
  return sql.append(list).append(" FROM ").append(table).append(" ").append(where).append(" FOR UPDATE");
}

std::string Dialect::Listed(std::string_view start, std::string_view qualifier,
                            const std::vector<std::string>& names) const {
  std::string list;
  for (const std::string& name : names) {
    list.append(list.empty() ? start : ",").append(qualifier).append(QuotedName(name));
  }
  return list;
}

std::string Dialect::InsertedNames(const std::vector<std::string>& columns) const {
  return columns.empty() ? "" : Listed(" (", "", columns) + ")";
}

std::string Dialect::InsertedValues(const std::vector<std::string>& columns) {
  std::string marks;
  for (std::size_t i = 0; i < columns.size(); ++i) marks += i == 0 ? " VALUES (?" : ",?";
  return columns.empty() ? " DEFAULT VALUES" : marks + ")";
}

std::string Dialect::InsertReturning(std::string_view table, const std::vector<std::string>& columns,
                                     const std::vector<std::string>& returned) const {
  return "INSERT INTO " + std::string(table) + InsertedNames(columns) + InsertedValues(columns) +
         Listed(" RETURNING ", "", returned);
}

std::string Dialect::DeleteOne(std::string_view table, std::string_view condition) const {
  std::string sql = "DELETE FROM ";
  return sql.append(table).append(" WHERE ").append(condition).append(" LIMIT 1");
}

std::string Dialect::UpdateOne(std::string_view table, std::string_view assignments,
                               std::string_view condition) const {
  std::string sql = "UPDATE ";
  sql.append(table).append(" SET ").append(assignments);
  return sql.append(" WHERE ").append(condition).append(" LIMIT 1");
}

}  // namespace ADODB::engine
