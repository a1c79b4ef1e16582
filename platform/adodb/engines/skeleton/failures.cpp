#include "platform/adodb/engines/skeleton/failures.hpp"

namespace ADODB::engine {

const Failures& SkeletonFailures() {
  static const Failures failures{
      .losesSession = nullptr, .leavesCommitOpen = nullptr, .needsPreparingAnew = nullptr};
  return failures;
}

}  // namespace ADODB::engine
