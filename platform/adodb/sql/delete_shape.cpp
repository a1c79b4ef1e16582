#include "platform/adodb/sql/delete_shape.hpp"

namespace ADODB::engine {

std::optional<DeleteParts> ReadDelete(std::string_view sql, const std::vector<Token>& tokens) {
  TokenReader reader(sql, tokens);
  DeleteParts parts;
  TokenRange first;
  if (!reader.Take("delete")) return std::nullopt;
  if (!reader.IsAt("from")) {
    if (!reader.TakeName(first)) return std::nullopt;
    parts.namesTableTwice = true;
  }
  if (!reader.Take("from") || !reader.TakeName(parts.table)) return std::nullopt;
  if (parts.namesTableTwice && first.In(sql, tokens) != parts.table.In(sql, tokens)) return std::nullopt;
  parts.where = reader.At();
  if (reader.AtEnd()) return parts;
  if (!reader.IsAt("where")) return std::nullopt;
  std::size_t depth = 0;
  for (; !reader.AtEnd(); reader.Skip()) {
    if (reader.IsAt("(")) ++depth;
    if (reader.IsAt(")") && depth > 0) --depth;
    if (depth == 0 && reader.IsAtAny({"order", "limit", "returning", "option"})) return std::nullopt;
  }
  return parts;
}

bool MayNameTableTwice(std::string_view sql, const std::vector<Token>& tokens, const DeleteParts& parts) {
  if (parts.namesTableTwice || parts.table.end - parts.table.begin != 1) return false;
  if (tokens[parts.table.begin].kind != TokenKind::Word) return false;
  const std::string_view table = parts.table.In(sql, tokens);
  bool asksSubquery = false;
  TokenReader reader(sql, tokens, parts.where);
  for (; !reader.AtEnd(); reader.Skip()) {
    const Token& token = tokens[reader.At()];
    if (token.kind == TokenKind::QuotedName || EqualsIgnoringAsciiCase(token.In(sql), table)) return false;
    if (reader.IsAtAny({"order", "limit", "returning"})) return false;
    asksSubquery = asksSubquery || (reader.IsAt("select") && Is(sql, tokens[reader.At() - 1], "(") &&
                                    Is(sql, tokens[reader.At() - 2], "in"));
  }
  return asksSubquery;
}

}  // namespace ADODB::engine
