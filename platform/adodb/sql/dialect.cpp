#include "platform/adodb/sql/dialect.hpp"

namespace ADODB::engine {

std::string Dialect::QuotedName(std::string_view name) const {
  std::string quoted = "\"";
  for (const char c : name) quoted.append(c == '"' ? 2u : 1u, c);
  return quoted + '"';
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

std::string Dialect::InsertReturning(std::string_view table, const std::vector<std::string>& columns,
                                     const std::vector<std::string>& returned) const {
  std::string sql = "INSERT INTO ";
  sql += table;
  std::string marks;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    sql += (i == 0 ? " (" : ",") + QuotedName(columns[i]);
    marks += i == 0 ? "?" : ",?";
  }
  sql += columns.empty() ? " DEFAULT VALUES" : ") VALUES (" + marks + ")";
  for (std::size_t i = 0; i < returned.size(); ++i) {
    sql += (i == 0 ? " RETURNING " : ",") + QuotedName(returned[i]);
  }
  return sql;
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
