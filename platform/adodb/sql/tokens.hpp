// SQL text taken apart: enough to know string literals, quoted names and comments from everything else.
//
// A quote inside a literal or a quoted name is written twice; a backslash is an ordinary character. Sessions
// are set up to read literals the same way.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/text.hpp"

namespace ADODB::engine {

enum class TokenKind {
  Word,        // a keyword or a plain name
  QuotedName,  // "name", [name] or `name`
  Text,        // a string literal, with its quotes
  Number,      // digits, with fraction and exponent; a sign is a symbol of its own
  Symbol,      // an operator, a bracket, a comma, ...; two-character comparisons and || are one symbol
};

struct Token {
  TokenKind kind;
  std::size_t offset;  // bytes from the start of the text
  std::size_t length;

  std::string_view In(std::string_view sql) const { return sql.substr(offset, length); }
  std::size_t End() const { return offset + length; }
};

// The tokens in order, without white space and comments. A literal, quoted name or comment that does not end
// reaches to the end of the text and makes `unterminated` its offset, which is npos otherwise. `ambiguous` is
// the offset of the first thing that engines read differently: a comment in a comment, a comment that MariaDB
// executes, "--" without a space behind it, "#", a dollar-quoted literal, a literal with escapes (E'\''),
// anything but a name in brackets.
struct TokenList {
  std::vector<Token> tokens;
  std::size_t unterminated = std::string_view::npos;
  std::size_t ambiguous = std::string_view::npos;
};
TokenList Tokenize(std::string_view sql);

// Whether `token` is the given keyword or symbol; `lowerCase` is in lower case, words match in any case.
bool Is(std::string_view sql, const Token& token, std::string_view lowerCase);

using base::EqualsIgnoringAsciiCase;

// What stands between the quotes of a quoted token, doubled ones inside as one.
std::string Unquoted(std::string_view quoted);

// The words and quoted names of a text in order, the latter without their quotes.
std::vector<std::string> Names(std::string_view sql);

// The word that a statement begins with, brackets before it left out; empty where there is none.
std::string_view FirstWord(std::string_view sql);

// Tokens from `begin` up to `end`.
struct TokenRange {
  std::size_t begin = 0;
  std::size_t end = 0;

  // As the statement writes them, with what stands between them.
  std::string_view In(std::string_view sql, const std::vector<Token>& tokens) const {
    if (begin == end) return {};
    return sql.substr(tokens[begin].offset, tokens[end - 1].End() - tokens[begin].offset);
  }
};

// Walks along the tokens of a statement. It refers to both.
class TokenReader {
 public:
  TokenReader(std::string_view sql, const std::vector<Token>& tokens, std::size_t at = 0)
      : sql_(sql), tokens_(tokens), at_(at) {}

  std::size_t At() const { return at_; }
  bool AtEnd() const { return at_ == tokens_.size(); }
  bool IsAt(std::string_view lowerCase) const { return !AtEnd() && Is(sql_, tokens_[at_], lowerCase); }
  bool IsAtAny(std::initializer_list<std::string_view> words) const;
  bool AtName() const;

  void Skip() { ++at_; }
  // Skips the token when it is this one.
  bool Take(std::string_view lowerCase);
  // "name", "schema.name", ...; false in the middle of something else.
  bool TakeName(TokenRange& name);

 private:
  std::string_view sql_;
  const std::vector<Token>& tokens_;
  std::size_t at_;
};

}  // namespace ADODB::engine
