// SQL text taken apart: enough to know texts, quoted names and comments from everything else.
//
// A quote inside a text or a quoted name is written twice; a backslash is an ordinary character. Engines are
// set up to read texts the same way.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace ADODB::engine {

enum class TokenKind {
  Word,        // a keyword or a plain name
  QuotedName,  // "name", [name] or `name`
  Text,        // 'text', with its quotes
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

// The tokens in order; blanks and comments are left out. A text, quoted name or comment that does not end
// reaches to the end of the text and makes `unterminated` its offset, which is npos otherwise. `ambiguous` is
// the offset of the first thing that not all engines take for the same: a comment in a comment, a comment
// that MariaDB runs, "--" without a blank behind it, "#", a text in dollar signs, a text with escapes
// (E'\''), something else than a name in brackets.
struct TokenList {
  std::vector<Token> tokens;
  std::size_t unterminated = std::string_view::npos;
  std::size_t ambiguous = std::string_view::npos;
};
TokenList Tokenize(std::string_view sql);

// Whether `token` is the given keyword or symbol; `lowerCase` is in lower case, words match in any case.
bool Is(std::string_view sql, const Token& token, std::string_view lowerCase);

bool EqualsIgnoringAsciiCase(std::string_view left, std::string_view right);

}  // namespace ADODB::engine
