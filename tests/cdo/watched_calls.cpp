#include "tests/cdo/watched_calls.hpp"

#include <sys/syscall.h>
#include <unistd.h>

#include <filesystem>

namespace {

std::vector<std::string>* watching = nullptr;

}  // namespace

// The program's own functions stand before those of the C library.
extern "C" {

int fsync(int descriptor) {
  if (watching != nullptr) {
    watching->push_back(
        "fsync " + std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor)).string());
  }
  return static_cast<int>(syscall(SYS_fsync, descriptor));
}

int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned int flags) noexcept {
  if (watching != nullptr) watching->push_back(std::string("rename ") + from + " " + to);
  return static_cast<int>(syscall(SYS_renameat2, fromFolder, from, toFolder, to, flags));
}
}

namespace orvane_test {

WatchedCalls::WatchedCalls() {
  watching = &seen_;
}

WatchedCalls::~WatchedCalls() {
  watching = nullptr;
}

}  // namespace orvane_test
