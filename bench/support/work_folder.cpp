#include "bench/support/work_folder.hpp"

#include <stdlib.h>

#include <stdexcept>
#include <string>
#include <thread>

namespace orvane_bench {

WorkFolder::WorkFolder() {
  std::string pattern = (std::filesystem::temp_directory_path() / "orvane-bench-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder: " + pattern);
  path_ = pattern;
}

WorkFolder::~WorkFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

void LetFilesSettle(std::chrono::steady_clock::time_point madeBy) {
  // The longest step in which a file system tells time is two seconds.
  std::this_thread::sleep_until(madeBy + std::chrono::seconds(3));
}

}  // namespace orvane_bench
