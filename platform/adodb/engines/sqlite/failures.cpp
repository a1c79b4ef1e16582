#include "platform/adodb/engines/sqlite/failures.hpp"

namespace ADODB::engine {
namespace {

// After a failure of the device the commit may be there when the file is opened again: maybe the last byte
// that counts was written before.
bool LeavesCommitOpen(std::string_view, std::int32_t nativeCode) {
  constexpr std::int32_t kPrimaryCode = 0xFF;
  constexpr std::int32_t kIoError = 10;
  return (nativeCode & kPrimaryCode) == kIoError;
}

}  // namespace

const Failures& SqliteFailures() {
  static const Failures failures{.leavesCommitOpen = &LeavesCommitOpen};
  return failures;
}

}  // namespace ADODB::engine
