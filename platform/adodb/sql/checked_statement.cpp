#include "platform/adodb/sql/checked_statement.hpp"

#include <algorithm>
#include <span>
#include <string>

namespace ADODB::engine {
namespace {

constexpr std::size_t kNone = std::string_view::npos;

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}
bool IsWordPart(char c) {
  return IsDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' ||
         static_cast<unsigned char>(c) >= 0x80;
}

// Sign, digits, and maybe a point with more digits.
bool IsSignedDecimal(std::string_view text) {
  if (!text.empty() && (text.front() == '-' || text.front() == '+')) text.remove_prefix(1);
  const std::size_t point = text.find('.');
  const std::string_view whole = text.substr(0, point);
  const std::string_view fraction = point == kNone ? std::string_view("0") : text.substr(point + 1);
  return !whole.empty() && !fraction.empty() && std::all_of(whole.begin(), whole.end(), IsDigit) &&
         std::all_of(fraction.begin(), fraction.end(), IsDigit);
}

// Where an inserted value would end the literal around it, or change it: just behind its first quotes, or at
// a NUL.
std::size_t Breakout(std::string_view value) {
  constexpr std::string_view kBreaking("'\0", 2);
  std::size_t at = value.find_first_of(kBreaking);
  while (at < value.size() && value[at] == '\'') ++at;
  return at;
}

// A text in quotes, each quote inside written twice.
bool IsWholeText(std::string_view value) {
  if (value.size() < 2 || value.front() != '\'' || value.back() != '\'') return false;
  value = value.substr(1, value.size() - 2);
  for (std::size_t i = 0; i < value.size(); ++i) {
    if (value[i] == '\0') return false;
    if (value[i] == '\'' && (++i == value.size() || value[i] != '\'')) return false;
  }
  return true;
}

// Follows the fixed text and looks at each value in the place where it stands.
class ValueCheck {
 public:
  ValueCheck(const Statement& statement, const Dialect& dialect)
      : sql_(statement.ToString()), values_(statement.Values()), dialect_(dialect) {}

  void Run() {
    std::size_t at = 0;
    for (const Statement::Span& value : values_) {
      Fixed(at, value.offset);
      Value(value);
      at = value.offset + value.length;
    }
    // What follows the last value is fixed text, which the tokenizer reads.
  }

 private:
  // Whether a text, a quoted name or a comment may begin with the character.
  static bool MayOpen(char c) {
    return c == '\'' || c == '"' || c == '`' || c == '[' || c == '-' || c == '/';
  }

  enum class State { Outside, Text, Name, LineComment, BlockComment };

  void Fixed(std::size_t at, std::size_t end) {
    for (; at < end; ++at) {
      if (state_ == State::Outside) {
        while (at < end && !MayOpen(sql_[at])) ++at;
        if (at == end) return;
      }
      const char c = sql_[at];
      const char next = at + 1 < end ? sql_[at + 1] : '\0';
      switch (state_) {
        case State::Outside:
          if (c == '\'') state_ = State::Text;
          if (c == '"' || c == '`' || c == '[') state_ = State::Name, closing_ = c == '[' ? ']' : c;
          if (c == '-' && next == '-') state_ = State::LineComment, ++at;
          if (c == '/' && next == '*') state_ = State::BlockComment, ++at;
          break;
        case State::Text:
        case State::Name:
          if (c != (state_ == State::Text ? '\'' : closing_)) break;
          if (next == c) {
            ++at;
          } else {
            state_ = State::Outside;
          }
          break;
        case State::LineComment:
          if (c == '\n') state_ = State::Outside;
          break;
        case State::BlockComment:
          if (c == '*' && next == '/') state_ = State::Outside, ++at;
          break;
      }
    }
  }

  void Value(const Statement::Span& span) {
    const std::string_view value = sql_.substr(span.offset, span.length);
    if (state_ == State::Text) {
      const std::size_t breakout = Breakout(value);
      if (breakout != kNone) Refuse(span.offset + breakout);
      return;
    }
    const bool whole = IsSignedDecimal(value) || IsWholeText(value);
    if (state_ != State::Outside || !whole || !StandsAlone(span)) Refuse(span.offset);
  }

  // Whether nothing around the value makes one token with it: two signs are a comment, two literals
  // without a space between them one literal, a literal behind a letter one of another kind (E'...'), two
  // numbers a third.
  bool StandsAlone(const Statement::Span& span) const {
    const auto joins = [](char c) { return IsWordPart(c) || c == '\'' || c == '"' || c == '.' || c == '$'; };
    const char before = span.offset == 0 ? ' ' : sql_[span.offset - 1];
    const std::size_t end = span.offset + span.length;
    const char after = end == sql_.size() ? ' ' : sql_[end];
    // U&'...' is a text with escapes.
    if (before == '&' && sql_[span.offset] == '\'') return false;
    if (before == '-' && sql_[span.offset] == '-') return false;
    return !joins(before) && !joins(after);
  }

  // The engine would stumble over what stands behind the place: a word, or one character.
  [[noreturn]] void Refuse(std::size_t at) const {
    while (at < sql_.size() && sql_[at] == ' ') ++at;
    std::size_t end = at;
    while (end < sql_.size() && IsWordPart(sql_[end])) ++end;
    if (end == at && at < sql_.size()) ++end;
    throw dialect_.SyntaxError(sql_.substr(at, end - at));
  }

  std::string_view sql_;
  std::span<const Statement::Span> values_;
  const Dialect& dialect_;
  State state_ = State::Outside;
  char closing_ = '\0';
};

}  // namespace

void CheckValues(const Statement& statement, const Dialect& dialect) {
  if (!statement.Values().empty()) ValueCheck(statement, dialect).Run();
}

CheckedStatement CheckText(const Statement& statement, const Dialect& dialect) {
  CheckedStatement checked{statement.ToString(), Tokenize(statement.ToString())};
  TokenList& list = checked.list;
  if (list.unterminated != kNone) {
    throw dialect.SyntaxError(checked.sql.substr(list.unterminated, 40));
  }
  if (list.ambiguous != kNone) throw dialect.SyntaxError(checked.sql.substr(list.ambiguous, 40));
  const auto isEnd = [&](const Token& token) { return Is(checked.sql, token, ";"); };
  const auto end = std::find_if(list.tokens.begin(), list.tokens.end(), isEnd);
  const auto second = std::find_if_not(end, list.tokens.end(), isEnd);
  if (second != list.tokens.end()) throw dialect.SyntaxError(second->In(checked.sql));
  if (end != list.tokens.end()) checked.sql = checked.sql.substr(0, end->offset);
  list.tokens.erase(end, list.tokens.end());
  if (list.tokens.empty()) throw dialect.SyntaxError({});
  return checked;
}

}  // namespace ADODB::engine
