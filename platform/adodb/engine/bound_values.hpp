// Inserted values taken out of a statement and handed to the engine as parameters.
//
// A job asks the same question again and again with another value in it. As a text it is another statement
// each time, to be read and planned anew; with its values bound it is the same one, and stays prepared.
#pragma once

#include <optional>
#include <string>

#include "platform/adodb/engine/provider.hpp"
#include "platform/adodb/statement.hpp"

namespace ADODB::engine {

struct BoundStatement {
  std::string text;  // the statement with "?" in the place of each value and its quotes
  Parameters values;
};

// Nothing unless every inserted value is either the whole of a quoted text, with no quote inside, or a whole
// number that something is compared with, and the fixed text has none of the tokens whose rewriting looks at
// a value. The values of such a statement are in order; CheckValues would find nothing to say about them.
std::optional<BoundStatement> BindValues(const Statement& statement);

}  // namespace ADODB::engine
