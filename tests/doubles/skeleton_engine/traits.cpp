#include "tests/doubles/skeleton_engine/traits.hpp"

namespace ADODB::engine {

// One that is reached through a driver needs its names in `drivers`, and `describe`.
const Traits& SkeletonTraits() {
  static const Traits traits;
  return traits;
}

}  // namespace ADODB::engine
