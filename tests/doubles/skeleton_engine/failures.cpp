#include "tests/doubles/skeleton_engine/failures.hpp"

namespace ADODB::engine {

const Failures& SkeletonFailures() {
  static const Failures failures{
      .losesSession = nullptr, .leavesCommitOpen = nullptr, .needsPreparingAnew = nullptr};
  return failures;
}

}  // namespace ADODB::engine
