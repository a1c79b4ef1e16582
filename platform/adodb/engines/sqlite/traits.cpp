#include "platform/adodb/engines/sqlite/traits.hpp"

namespace ADODB::engine {

const Traits& SqliteTraits() {
  static const Traits traits{.provider = "SQLite"};
  return traits;
}

}  // namespace ADODB::engine
