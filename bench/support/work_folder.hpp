#pragma once

#include <chrono>
#include <filesystem>

namespace orvane_bench {

// A folder that is removed with its content at the end of the program's run.
class WorkFolder {
 public:
  WorkFolder();
  ~WorkFolder();
  WorkFolder(const WorkFolder&) = delete;
  WorkFolder& operator=(const WorkFolder&) = delete;
  const std::filesystem::path& Path() const { return path_; }

 private:
  std::filesystem::path path_;
};

// Waits until files that had been made by then are as old as those of an installation in use. A job looks
// into younger ones each time it needs them, since their times do not yet prove that they are unchanged.
void LetFilesSettle(std::chrono::steady_clock::time_point madeBy = std::chrono::steady_clock::now());

}  // namespace orvane_bench
