#include "platform/adodb/sql/change_shape.hpp"

namespace ADODB::engine {
namespace {

std::optional<Change> TakeKind(TokenReader& reader) {
  if (reader.Take("insert") || reader.Take("replace")) return Change::Insert;
  if (reader.Take("update") || reader.Take("merge")) return Change::Update;
  if (reader.Take("delete")) return Change::Delete;
  return std::nullopt;
}

// What engines allow between the kind and the table, such as INSERT OR IGNORE INTO.
void SkipModifiers(TokenReader& reader) {
  while (reader.IsAtAny(
      {"or", "ignore", "low_priority", "high_priority", "delayed", "quick", "only", "from", "into"})) {
    const bool alternative = reader.IsAt("or");
    reader.Skip();
    if (alternative && !reader.AtEnd()) reader.Skip();
  }
}

}  // namespace

std::optional<ChangeParts> ReadChange(std::string_view sql, const std::vector<Token>& tokens) {
  TokenReader reader(sql, tokens);
  const std::optional<Change> change = TakeKind(reader);
  if (!change) return std::nullopt;
  SkipModifiers(reader);
  ChangeParts parts{*change, {}};
  if (reader.IsAt("top") || !reader.TakeName(parts.table)) return std::nullopt;
  return parts;
}

bool OnlyReads(std::string_view sql, const std::vector<Token>& tokens) {
  TokenReader reader(sql, tokens);
  while (reader.Take("(")) {
  }
  if (!reader.IsAtAny({"select", "with", "values", "show", "set"})) return false;
  for (; !reader.AtEnd(); reader.Skip()) {
    const std::size_t at = reader.At();
    const bool isCall = at + 1 < tokens.size() && Is(sql, tokens[at + 1], "(");
    if (reader.IsAtAny({"insert", "delete", "merge", "into"}) && !isCall) return false;
    // SELECT ... FOR UPDATE, FOR NO KEY UPDATE
    const bool locks = at > 0 && (Is(sql, tokens[at - 1], "for") || Is(sql, tokens[at - 1], "key"));
    if (reader.IsAt("update") && !locks) return false;
  }
  return true;
}

}  // namespace ADODB::engine
