#include "tests/e2e/demo_suite.hpp"

#include <fcntl.h>
#include <sys/stat.h>

#include <stdexcept>

#include "tests/e2e/host_process.hpp"
#include "tests/support/temporary_folder.hpp"

namespace orvane_test {
namespace {

namespace fs = std::filesystem;

struct stat StatusOf(const fs::path& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) throw std::runtime_error("no " + path.string());
  return status;
}

void SetTimes(const fs::path& path, const struct stat& status) {
  const timespec times[] = {status.st_atim, status.st_mtim};
  if (utimensat(AT_FDCWD, path.c_str(), times, 0) != 0)
    throw std::runtime_error("utimensat " + path.string());
}

// A folder's times come last: what is put into it changes them.
void Copy(const fs::path& from, const fs::path& to) {
  const struct stat status = StatusOf(from);
  if (S_ISDIR(status.st_mode)) {
    fs::create_directory(to, from);
    for (const auto& entry : fs::directory_iterator(from)) Copy(entry.path(), to / entry.path().filename());
  } else {
    fs::copy_file(from, to);
  }
  SetTimes(to, status);
  SetTimes(from, status);  // reading has changed them
}

fs::path Original() {
  static const TemporaryFolder folder;
  static const fs::path home = [] {
    fs::path made = folder.Path() / "home";
    const Outcome outcome = RunHost({"init", made.string(), "--demo"});
    if (outcome.exitCode != 0) throw std::runtime_error(outcome.err);
    return made;
  }();
  return home;
}

}  // namespace

void MakeDemoSuite(const fs::path& home) {
  fs::create_directories(home.parent_path());
  Copy(Original(), home);
}

}  // namespace orvane_test
