#include "platform/adodb/engine/bound_values.hpp"

#include <charconv>
#include <string_view>

namespace ADODB::engine {
namespace {

constexpr std::size_t kMostValues = 8;
constexpr std::size_t kLongestText = 1024;

// Follows the fixed text between two values. Texts, names and comments that reach over a value, and tokens
// that are rewritten, make the statement one that is sent as it stands.
bool IsPlain(std::string_view fixed) {
  for (std::size_t i = 0; i < fixed.size(); ++i) {
    switch (fixed[i]) {
      case '\'':
      case '"':
      case '[':
      case '`':
      case '{':
      case '+':
      case '?':
      case ';':
        return false;
      case '-':
      case '/':
        if (i + 1 < fixed.size() && (fixed[i + 1] == '-' || fixed[i + 1] == '*')) return false;
        break;
      case '(':
        // A call may be one that is rewritten; a bracket behind a blank is none.
        if (i > 0 && fixed[i - 1] != ' ' && fixed[i - 1] != '(') return false;
        break;
      default:
        break;
    }
  }
  return true;
}

bool EndsInComparison(std::string_view fixed) {
  while (!fixed.empty() && fixed.back() == ' ') fixed.remove_suffix(1);
  return !fixed.empty() && (fixed.back() == '=' || fixed.back() == '<' || fixed.back() == '>');
}

std::optional<std::int64_t> WholeNumber(std::string_view text) {
  std::int64_t number = 0;
  const char* end = text.data() + text.size();
  const auto [stop, problem] = std::from_chars(text.data(), end, number);
  if (problem != std::errc{} || stop != end) return std::nullopt;
  return number;
}

}  // namespace

std::optional<BoundStatement> BindValues(const Statement& statement) {
  const std::string_view sql = statement.ToString();
  const auto& spans = statement.Values();
  if (spans.empty() || spans.size() > kMostValues || sql.size() > kLongestText) return std::nullopt;
  BoundStatement bound;
  bound.text.reserve(sql.size());
  bound.values.reserve(spans.size());
  std::size_t at = 0;
  for (const Statement::Span& span : spans) {
    const std::string_view value = sql.substr(span.offset, span.length);
    const std::size_t end = span.offset + span.length;
    if (span.offset <= at) return std::nullopt;
    std::string_view fixed = sql.substr(at, span.offset - at);
    if (fixed.back() == '\'') {
      if (end >= sql.size() || sql[end] != '\'' ||
          value.find_first_of(std::string_view("'\0", 2)) != value.npos) {
        return std::nullopt;
      }
      fixed.remove_suffix(1);
      bound.values.emplace_back(value);
      at = end + 1;
    } else {
      const std::optional<std::int64_t> number = WholeNumber(value);
      const bool delimited = end == sql.size() || sql[end] == ' ' || sql[end] == ')';
      if (!number || !delimited) return std::nullopt;
      bound.values.emplace_back(*number);
      at = end;
    }
    if (!EndsInComparison(fixed) || !IsPlain(fixed)) return std::nullopt;
    bound.text.append(fixed).append(1, '?');
  }
  const std::string_view rest = sql.substr(at);
  if (!IsPlain(rest)) return std::nullopt;
  bound.text.append(rest);
  return bound;
}

}  // namespace ADODB::engine
