// What an engine does in another way than the others, each with its reason.
#pragma once

#include <span>
#include <string_view>

namespace orvane_test {

// A deviation, or none. A test that it touches checks the other behaviour instead; none is left out.
struct Quirk {
  std::string_view because;  // empty where the engine does as the others do
  operator bool() const { return !because.empty(); }
};

struct Quirks {
  std::string_view engine;  // as in the table of engines
  // "=" between strings ignores case, or trailing spaces: the collation that the engine's databases have by
  // default.
  Quirk textIgnoresCase;
  Quirk textIgnoresTrailingBlanks;
  // A table without a primary key has no address for its rows that stays: a keyset that comes back to a row
  // finds it gone when someone has changed it, instead of showing the change.
  Quirk losesChangedRowsWithoutKey;
  // A failed statement ends the transaction around it; later statements fail until it is rolled back.
  Quirk failureEndsTransaction;
  // Any column takes any value, whatever it declares.
  Quirk storesAnyType;
  // A writer waits for every other writer of the database, and not only for those of the same rows.
  Quirk locksWholeDatabase;
};

// In the order of the table of engines.
std::span<const Quirks> AllQuirks();
// Raises std::invalid_argument for an engine that has none written down.
const Quirks& QuirksOf(std::string_view engine);

}  // namespace orvane_test
