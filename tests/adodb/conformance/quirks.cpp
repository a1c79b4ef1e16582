#include "tests/adodb/conformance/quirks.hpp"

#include <stdexcept>
#include <string>

namespace orvane_test {
namespace {

constexpr Quirks kQuirks[] = {
    {.engine = "sqlite",
     .textIgnoresCase = {},
     .textIgnoresTrailingBlanks = {},
     .losesChangedRowsWithoutKey = {},
     .failureEndsTransaction = {},
     .storesAnyType = {"a declared type is advice"},
     .locksWholeDatabase = {"one writer a file"}},
    {.engine = "postgresql",
     .textIgnoresCase = {},
     .textIgnoresTrailingBlanks = {},
     .losesChangedRowsWithoutKey = {"a changed row lies elsewhere"},
     .failureEndsTransaction = {},
     .storesAnyType = {},
     .locksWholeDatabase = {}},
    {.engine = "mariadb",
     .textIgnoresCase = {"the default collation; not the suite's"},
     .textIgnoresTrailingBlanks = {"the default collation; not the suite's"},
     .losesChangedRowsWithoutKey = {"rows have no address but their values"},
     .failureEndsTransaction = {},
     .storesAnyType = {},
     .locksWholeDatabase = {}},
    {.engine = "sqlserver",
     .textIgnoresCase = {"the default collation; not the suite's"},
     .textIgnoresTrailingBlanks = {"every collation"},
     .losesChangedRowsWithoutKey = {"rows have no address but their values"},
     .failureEndsTransaction = {},
     .storesAnyType = {},
     .locksWholeDatabase = {}},
};

}  // namespace

std::span<const Quirks> AllQuirks() {
  return kQuirks;
}

const Quirks& QuirksOf(std::string_view engine) {
  for (const Quirks& quirks : kQuirks) {
    if (quirks.engine == engine) return quirks;
  }
  throw std::invalid_argument("no quirks are written down for " + std::string(engine));
}

}  // namespace orvane_test
