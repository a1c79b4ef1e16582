#include "platform/adodb/sql/select_shape.hpp"

namespace ADODB::engine {
namespace {

// Plain columns, with or without an alias, and "*".
bool SkipList(TokenReader& reader) {
  if (reader.IsAtAny({"distinct", "all", "top", "from"})) return false;
  for (; !reader.AtEnd() && !reader.IsAt("from"); reader.Skip()) {
    if (!reader.AtName() && !reader.IsAtAny({"*", ".", ","})) return false;
    if (reader.IsAt("case")) return false;
  }
  return true;
}

bool ReadTable(TokenReader& reader, SelectParts& parts) {
  if (!reader.TakeName(parts.table)) return false;
  parts.name = parts.table;
  const bool as = reader.Take("as");
  if (as && !reader.AtName()) return false;
  if (as || (reader.AtName() && !reader.IsAtAny({"where", "order"}))) {
    if (reader.IsAtAny({"join", "inner", "left", "right", "cross", "natural", "full", "group", "having",
                        "union", "limit", "except", "intersect", "for", "offset", "with"})) {
      return false;
    }
    parts.name = {reader.At(), reader.At() + 1};
    reader.Skip();
  }
  return reader.AtEnd() || reader.IsAtAny({"where", "order"});
}

// To the next clause outside brackets; false when that clause makes more of the statement than its rows.
bool SkipCondition(TokenReader& reader) {
  const std::size_t begin = reader.At();
  std::size_t depth = 0;
  for (; !reader.AtEnd(); reader.Skip()) {
    if (reader.IsAt("(")) ++depth;
    if (reader.IsAt(")") && depth-- == 0) return false;
    if (depth > 0) continue;
    if (reader.IsAt("order") && reader.At() > begin) return true;
    if (reader.IsAtAny({"group", "having", "union", "limit", "except", "intersect", "for", "window"})) {
      return false;
    }
  }
  return reader.At() > begin;
}

}  // namespace

std::optional<SelectParts> ReadSelect(std::string_view sql, const std::vector<Token>& tokens) {
  TokenReader reader(sql, tokens);
  SelectParts parts;
  if (!reader.Take("select")) return std::nullopt;
  parts.list.begin = reader.At();
  if (!SkipList(reader)) return std::nullopt;
  parts.list.end = reader.At();
  if (!reader.Take("from") || !ReadTable(reader, parts)) return std::nullopt;
  if (reader.Take("where")) {
    parts.condition.begin = reader.At();
    if (!SkipCondition(reader)) return std::nullopt;
    parts.condition.end = reader.At();
  }
  if (reader.IsAt("order")) {
    parts.order.begin = reader.At();
    if (!SkipCondition(reader)) return std::nullopt;
    parts.order.end = reader.At();
  }
  if (!reader.AtEnd()) return std::nullopt;
  return parts;
}

std::string SelectShape::From(std::string_view extraCondition) const {
  std::string sql = " FROM " + table;
  if (name != table) sql += " " + name;
  if (condition.empty() && extraCondition.empty()) return sql;
  sql += " WHERE ";
  if (!condition.empty()) sql += "(" + condition + ")";
  if (!condition.empty() && !extraCondition.empty()) sql += " AND ";
  if (!extraCondition.empty()) sql += extraCondition;
  return sql;
}

std::string SelectShape::ListWithKey(const TableShape& key, const Dialect& dialect) const {
  std::string text = list;
  for (const std::string& column : key.keyColumns) text += "," + name + "." + dialect.QuotedName(column);
  return text;
}

std::string SelectShape::Holding(std::string_view column, const Dialect& dialect) const {
  return "SELECT 1" + From(name + "." + dialect.QuotedName(column) + " = ?");
}

}  // namespace ADODB::engine
