#include "platform/adodb/sql/bound_values.hpp"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <functional>
#include <string_view>
#include <utility>

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

// Calls `take` with each piece of fixed text in turn, and the piece's end that a value follows. `take`
// answers whether to go on.
template <class Take>
bool ForEachPiece(const Statement& statement, Take&& take) {
  const std::string_view sql = statement.ToString();
  std::size_t at = 0;
  for (const Statement::Span& span : statement.Values()) {
    if (!take(sql.substr(at, span.offset - at))) return false;
    at = span.offset + span.length;
  }
  return take(sql.substr(at));
}

}  // namespace

bool ValuesToBind(const Statement& statement, Parameters& values) {
  const std::string_view sql = statement.ToString();
  const auto spans = statement.Values();
  if (spans.empty() || spans.size() > kMostValues || sql.size() > kLongestText) return false;
  values.resize(spans.size());
  std::size_t at = 0;
  std::size_t number = 0;
  for (const Statement::Span& span : spans) {
    automation::Variant& into = values[number++];
    const std::string_view value = sql.substr(span.offset, span.length);
    const std::size_t end = span.offset + span.length;
    if (span.offset <= at) return false;
    if (sql[span.offset - 1] == '\'') {
      const auto endsText = [](char c) { return c == '\'' || c == '\0'; };
      if (end >= sql.size() || sql[end] != '\'' || std::any_of(value.begin(), value.end(), endsText)) {
        return false;
      }
      into.SetText(value);
      at = end + 1;
    } else {
      const std::optional<std::int64_t> whole = WholeNumber(value);
      const bool delimited = end == sql.size() || sql[end] == ' ' || sql[end] == ')';
      if (!whole || !delimited) return false;
      into = OfWhole(*whole);  // as an engine types the literal
      at = end;
    }
  }
  return true;
}

std::optional<BoundStatement> BindValues(const Statement& statement, std::string_view number) {
  BoundStatement bound;
  if (!ValuesToBind(statement, bound.values)) return std::nullopt;
  const std::string_view sql = statement.ToString();
  bound.text.reserve(sql.size());
  std::size_t at = 0;
  for (const Statement::Span& span : statement.Values()) {
    std::string_view fixed = sql.substr(at, span.offset - at);
    const bool quoted = fixed.back() == '\'';
    if (quoted) fixed.remove_suffix(1);
    if (!EndsInComparison(fixed) || !IsPlain(fixed)) return std::nullopt;
    bound.text.append(fixed).append(quoted ? "?" : number);
    at = span.offset + span.length + (quoted ? 1 : 0);
  }
  const std::string_view rest = sql.substr(at);
  if (!IsPlain(rest)) return std::nullopt;
  bound.text.append(rest);
  return bound;
}

FixedText::FixedText(const Statement& statement) {
  ForEachPiece(statement, [&](std::string_view piece) {
    text_.append(piece);
    values_.push_back(text_.size());
    return true;
  });
  values_.pop_back();  // no value follows the last piece
}

bool FixedText::IsOf(const Statement& statement) const {
  if (statement.Values().size() != values_.size()) return false;
  std::size_t at = 0;
  std::size_t number = 0;
  return ForEachPiece(statement, [&](std::string_view piece) {
    const std::size_t end = number < values_.size() ? values_[number] : text_.size();
    const bool same = std::string_view(text_).substr(at, end - at) == piece;
    at = end;
    ++number;
    return same;
  });
}

namespace {

std::size_t Mixed(std::size_t hash, std::string_view piece) {
  return (hash ^ std::hash<std::string_view>()(piece)) * 0x9E3779B97F4A7C15U;
}

}  // namespace

std::size_t FixedText::Hash(const Statement& statement) {
  std::size_t hash = 0;
  ForEachPiece(statement, [&](std::string_view piece) {
    hash = Mixed(hash, piece);
    return true;
  });
  return hash;
}

std::size_t FixedText::Hash(std::string_view text) {
  return Mixed(0, text);
}

std::size_t FixedText::Hash() const {
  std::size_t hash = 0;
  std::size_t at = 0;
  for (const std::size_t end : values_) {
    hash = Mixed(hash, std::string_view(text_).substr(at, end - at));
    at = end;
  }
  return Mixed(hash, std::string_view(text_).substr(at));
}

}  // namespace ADODB::engine
