#include "platform/adodb/engines/mariadb/failures.hpp"

#include <algorithm>
#include <iterator>

namespace ADODB::engine {
namespace {

bool LosesSession(std::string_view, std::int32_t nativeCode) {
  // Server has gone away, lost connection (twice), connection was killed, idle limit.
  constexpr std::int32_t kCodes[] = {2006, 2013, 2055, 1927, 4031};
  return std::ranges::find(kCodes, nativeCode) != std::end(kCodes);
}

bool LeavesCommitOpen(std::string_view, std::int32_t nativeCode) {
  // Shutting down, a storage engine failed in mid-commit, interrupted while it waited for a replica.
  constexpr std::int32_t kCodes[] = {1053, 1180, 1317};
  return std::ranges::find(kCodes, nativeCode) != std::end(kCodes);
}

// The server gives a statement up when its tables change too often meanwhile.
bool NeedsPreparingAnew(std::string_view, std::int32_t nativeCode, bool) {
  return nativeCode == 1615;
}

}  // namespace

const Failures& MariaDbFailures() {
  static const Failures failures{.losesSession = &LosesSession,
                                 .leavesCommitOpen = &LeavesCommitOpen,
                                 .needsPreparingAnew = &NeedsPreparingAnew};
  return failures;
}

}  // namespace ADODB::engine
