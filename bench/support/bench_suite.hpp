// An installation on the embedded database, as the host would run it.
#pragma once

#include <filesystem>
#include <memory>
#include <string_view>

#include "platform/automation/runtime.hpp"

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

std::filesystem::path DatabaseOf(const std::filesystem::path& home);

// Writes an installation with empty tables.
void MakeSuite(const std::filesystem::path& home);
// Writes its site configuration alone, on the embedded database or another connection.
void MakeSuiteConfiguration(const std::filesystem::path& home, std::string_view connectionString = {});

// Job code's surroundings in that installation, current for the thread for as long as the object lives.
class BenchSuite {
 public:
  explicit BenchSuite(const std::filesystem::path& home);

 private:
  automation::Runtime runtime_;
  automation::RuntimeScope scope_;
};

}  // namespace orvane_bench
