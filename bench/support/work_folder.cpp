#include "bench/support/work_folder.hpp"

#include <stdlib.h>

#include <stdexcept>
#include <string>

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

}  // namespace orvane_bench
