// Style sheets that were prepared before, for as long as their files stay as they were.
#pragma once

#include <ctime>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "platform/msxml2/xsl_template.hpp"

namespace OrvCommon {

// The state of every file beside the sheet, which may include any of them: name, size, time of change and
// identity, and its content where it changed so lately that a further change might bear the same time.
// Nothing when it cannot be told. `now` is by the clock of the file system.
std::optional<std::string> FolderState(const std::filesystem::path& sheet, std::time_t now);

// May be shared by threads.
class PreparedSheets {
 public:
  // The sheet as it was kept for this state; null when there is none.
  MSXML2::XSLTemplatePtr Find(const std::string& sheet, const std::string& state) const;
  void Keep(const std::string& sheet, const std::string& state, const MSXML2::XSLTemplatePtr& prepared);

 private:
  struct Entry {
    std::string state;
    MSXML2::XSLTemplatePtr prepared;
  };
  mutable std::mutex mutex_;
  std::map<std::string, Entry> entries_;  // by path; a suite has a handful of sheets
};

}  // namespace OrvCommon
