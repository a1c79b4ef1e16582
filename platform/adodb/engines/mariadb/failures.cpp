#include "platform/adodb/engines/mariadb/failures.hpp"

#include <algorithm>
#include <array>

namespace ADODB::engine {
namespace {

template <std::size_t N>
bool Has(const std::array<std::int32_t, N>& codes, std::int32_t code) {
  return std::find(codes.begin(), codes.end(), code) != codes.end();
}

bool LosesSession(std::string_view, std::int32_t nativeCode) {
  // Server has gone away, lost connection (twice), connection was killed, idle limit.
  constexpr std::array<std::int32_t, 5> kCodes = {2006, 2013, 2055, 1927, 4031};
  return Has(kCodes, nativeCode);
}

bool LeavesCommitOpen(std::string_view, std::int32_t nativeCode) {
  // Shutting down, a storage engine failed in mid-commit, interrupted while it waited for a replica.
  constexpr std::array<std::int32_t, 3> kCodes = {1053, 1180, 1317};
  return Has(kCodes, nativeCode);
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
