#include "platform/adodb/cursor/criterion.hpp"

#include "platform/adodb/sql/tokens.hpp"
#include "platform/automation/error.hpp"

namespace ADODB::engine {
namespace {

[[noreturn]] void Refuse() {
  throw automation::Error(automation::ErrorNumber::ArgumentsInvalid, "ADODB.Recordset");
}

}  // namespace

Criterion ParseCriterion(std::string_view text) {
  const TokenList list = Tokenize(text);
  const std::vector<Token>& tokens = list.tokens;
  if (list.unterminated != std::string_view::npos || tokens.size() < 3 || !Is(text, tokens[1], "=")) Refuse();
  Criterion criterion;
  if (tokens[0].kind == TokenKind::Word) {
    criterion.column = tokens[0].In(text);
  } else if (tokens[0].kind == TokenKind::QuotedName) {
    criterion.column = Unquoted(tokens[0].In(text));
  } else {
    Refuse();
  }
  if (tokens.back().End() != text.size()) Refuse();
  if (tokens.size() == 3 && tokens[2].kind == TokenKind::Text) {
    const std::string_view value = tokens[2].In(text).substr(1, tokens[2].length - 2);
    if (value.find_first_of(std::string_view("'\0", 2)) != std::string_view::npos) Refuse();
    criterion.value = value;
    return criterion;
  }
  const bool negative = Is(text, tokens[2], "-");
  const std::size_t number = negative ? 3 : 2;
  if (tokens.size() != number + 1 || tokens[number].kind != TokenKind::Number) Refuse();
  const std::string digits = (negative ? "-" : "") + std::string(tokens[number].In(text));
  try {
    if (digits.find_first_of(".eE") == std::string::npos) {
      criterion.value = automation::ToInt64(automation::Variant(digits));
    } else {
      criterion.value = automation::ToDouble(automation::Variant(digits));
    }
  } catch (const automation::Error&) {
    Refuse();  // "1.2.3", or a number beyond every type
  }
  return criterion;
}

}  // namespace ADODB::engine
