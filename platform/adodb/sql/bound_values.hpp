// Inserted values taken out of a statement and handed to the engine as parameters.
//
// A job asks the same question again and again with another value in it. As a text it is another statement
// each time, to be read and planned anew; with its values bound it is the same one, and stays prepared.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/adodb/sql/parameters.hpp"
#include "platform/adodb/statement.hpp"

namespace ADODB::engine {

struct BoundStatement {
  std::string text;  // the statement with "?" in the place of each value and its quotes, or `number`
  Parameters values;
};

// Nothing unless every inserted value is either the whole of a string literal, without a quote inside, or a
// whole number that something is compared with, and the fixed text has none of the tokens whose rewriting
// looks at a value. The values of such a statement are in order; CheckValues would find nothing to say about
// them.
std::optional<BoundStatement> BindValues(const Statement& statement, std::string_view number = "?");

// The values alone, of a statement with the same fixed text as one that BindValues has taken, in place of
// what `values` held, whose memory is used again; false when they are not of that kind.
bool ValuesToBind(const Statement& statement, Parameters& values);

// The fixed text of a statement, to know it again with other values in it.
class FixedText {
 public:
  FixedText() = default;
  explicit FixedText(const Statement& statement);
  // Of a statement whose values are part of its text.
  explicit FixedText(std::string_view text) : text_(text) {}

  const std::string& Text() const { return text_; }
  bool IsOf(const Statement& statement) const;

  // The same for a statement and its fixed text.
  std::size_t Hash() const;
  static std::size_t Hash(const Statement& statement);
  static std::size_t Hash(std::string_view text);

 private:
  std::string text_;                 // all of it
  std::vector<std::size_t> values_;  // where in it values are inserted
};

}  // namespace ADODB::engine
