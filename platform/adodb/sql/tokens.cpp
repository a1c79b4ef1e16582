#include "platform/adodb/sql/tokens.hpp"

#include <algorithm>
#include <utility>

namespace ADODB::engine {
namespace {

using base::AsciiLower;

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}
bool IsBlank(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}
// Bytes beyond ASCII are letters of some alphabet.
bool IsWordStart(char c) {
  return (AsciiLower(c) >= 'a' && AsciiLower(c) <= 'z') || c == '_' || static_cast<unsigned char>(c) >= 0x80;
}
bool IsWordPart(char c) {
  return IsWordStart(c) || IsDigit(c) || c == '$' || c == '#';
}

class Scanner {
 public:
  explicit Scanner(std::string_view sql) : sql_(sql) {}

  TokenList Run() {
    while (SkipBlanksAndComments()) Scan();
    return std::move(list_);
  }

 private:
  char At(std::size_t index) const { return index < sql_.size() ? sql_[index] : '\0'; }

  // False at the end of the text.
  bool SkipBlanksAndComments() {
    while (at_ < sql_.size()) {
      if (IsBlank(sql_[at_])) {
        ++at_;
      } else if (sql_.substr(at_, 2) == "--") {
        const std::size_t end = sql_.find('\n', at_);
        const std::string_view line = sql_.substr(at_, end == std::string_view::npos ? end : end - at_);
        // MariaDB takes two minus signs without a space for what they are; PostgreSQL ends the line at a CR
        // too.
        const std::size_t cr = line.find('\r');
        if ((line.size() > 2 && !IsBlank(line[2])) ||
            (cr != std::string_view::npos && cr + 1 != line.size())) {
          MarkAmbiguous();
        }
        at_ = end == std::string_view::npos ? sql_.size() : end + 1;
      } else if (sql_.substr(at_, 2) == "/*") {
        const std::size_t end = sql_.find("*/", at_ + 2);
        if (end == std::string_view::npos) list_.unterminated = at_;
        const std::string_view inside =
            sql_.substr(at_ + 2, end == std::string_view::npos ? end : end - at_ - 2);
        if (inside.starts_with('!') || inside.starts_with("M!") ||
            inside.find("/*") != std::string_view::npos || inside.ends_with('/')) {
          MarkAmbiguous();
        }
        at_ = end == std::string_view::npos ? sql_.size() : end + 2;
      } else {
        return true;
      }
    }
    return false;
  }

  void Scan() {
    const char c = sql_[at_];
    const std::size_t start = at_;
    if (c == '\'') return Text();
    if (c == '$' || c == '#' || c == '\0') MarkAmbiguous();
    if (c == '"') return Quoted(TokenKind::QuotedName, '"');
    if (c == '`' || c == '[') return OwnQuotedName(c == '[' ? ']' : c);
    if (IsWordStart(c)) {
      while (at_ < sql_.size() && IsWordPart(sql_[at_])) {
        if (sql_[at_] == '#') MarkAmbiguous();
        ++at_;
      }
      return Add(TokenKind::Word, start);
    }
    if (IsDigit(c) || (c == '.' && IsDigit(At(at_ + 1)))) return Number();
    const std::string_view pair = sql_.substr(at_, 2);
    at_ += pair == "<=" || pair == ">=" || pair == "<>" || pair == "!=" || pair == "||" ? 2u : 1u;
    Add(TokenKind::Symbol, start);
  }

  void Text() {
    const std::size_t start = at_;
    Quoted(TokenKind::Text, '\'');
    const bool escapes =
        start > 0 && AsciiLower(sql_[start - 1]) == 'e' && (start < 2 || !IsWordPart(sql_[start - 2]));
    if (escapes && sql_.substr(start, at_ - start).find('\\') != std::string_view::npos) MarkAmbiguous(start);
  }

  // Quotes of some engines only: to the others the name itself must hold nothing but a name.
  void OwnQuotedName(char closing) {
    const std::size_t start = at_;
    Quoted(TokenKind::QuotedName, closing);
    for (std::size_t i = start + 1; i + 1 < at_; ++i) {
      if (!IsWordPart(sql_[i]) && sql_[i] != ' ') MarkAmbiguous(start);
      if (sql_[i] == '$' || sql_[i] == '#') MarkAmbiguous(start);
    }
  }

  void Quoted(TokenKind kind, char closing) {
    const std::size_t start = at_++;
    for (;;) {
      at_ = sql_.find(closing, at_);
      if (at_ == std::string_view::npos) {
        at_ = sql_.size();
        list_.unterminated = start;
        break;
      }
      ++at_;
      if (At(at_) != closing) break;
      ++at_;
    }
    Add(kind, start);
  }

  void Number() {
    const std::size_t start = at_;
    while (IsDigit(At(at_)) || At(at_) == '.') ++at_;
    if (AsciiLower(At(at_)) == 'e') {
      const std::size_t digits = at_ + (At(at_ + 1) == '+' || At(at_ + 1) == '-' ? 2u : 1u);
      if (IsDigit(At(digits))) {
        at_ = digits;
        while (IsDigit(At(at_))) ++at_;
      }
    }
    Add(TokenKind::Number, start);
  }

  void MarkAmbiguous() { MarkAmbiguous(at_); }
  void MarkAmbiguous(std::size_t at) { list_.ambiguous = std::min(list_.ambiguous, at); }
  void Add(TokenKind kind, std::size_t start) { list_.tokens.push_back({kind, start, at_ - start}); }

  std::string_view sql_;
  std::size_t at_ = 0;
  TokenList list_;
};

}  // namespace

TokenList Tokenize(std::string_view sql) {
  return Scanner(sql).Run();
}

std::string Unquoted(std::string_view quoted) {
  const char closing = quoted.back();
  std::string text;
  for (std::size_t i = 1; i + 1 < quoted.size(); ++i) {
    text += quoted[i];
    if (quoted[i] == closing) ++i;
  }
  return text;
}

std::vector<std::string> Names(std::string_view sql) {
  std::vector<std::string> names;
  for (const Token& token : Tokenize(sql).tokens) {
    if (token.kind == TokenKind::QuotedName) names.push_back(Unquoted(token.In(sql)));
    if (token.kind == TokenKind::Word) names.emplace_back(token.In(sql));
  }
  return names;
}

std::string_view FirstWord(std::string_view sql) {
  constexpr std::string_view kBefore = " \t\r\n(";
  sql.remove_prefix(std::min(sql.find_first_not_of(kBefore), sql.size()));
  return sql.substr(0, sql.find_first_of(" \t\r\n(*"));
}

bool Is(std::string_view sql, const Token& token, std::string_view lowerCase) {
  return (token.kind == TokenKind::Word || token.kind == TokenKind::Symbol) &&
         token.length == lowerCase.size() && EqualsIgnoringAsciiCase(token.In(sql), lowerCase);
}

bool TokenReader::IsAtAny(std::initializer_list<std::string_view> words) const {
  return std::any_of(words.begin(), words.end(), [this](std::string_view word) { return IsAt(word); });
}

bool TokenReader::AtName() const {
  return !AtEnd() && (tokens_[at_].kind == TokenKind::Word || tokens_[at_].kind == TokenKind::QuotedName);
}

bool TokenReader::Take(std::string_view lowerCase) {
  if (!IsAt(lowerCase)) return false;
  ++at_;
  return true;
}

bool TokenReader::TakeName(TokenRange& name) {
  name.begin = at_;
  do {
    if (!AtName()) return false;
    ++at_;
  } while (Take("."));
  name.end = at_;
  return true;
}

}  // namespace ADODB::engine
