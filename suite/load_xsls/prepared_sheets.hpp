// A cache of prepared style sheets, valid while the files of their folder are unchanged.
#pragma once

#include <chrono>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/base/file_stamp.hpp"
#include "platform/msxml2/xsl_template.hpp"

namespace OrvCommon {

// One file as it is, with its content where it changed so recently that a further change might leave the same
// stamp.
struct FileState {
  std::string name;
  base::FileStamp stamp;
  std::string content = {};

  bool operator==(const FileState&) const = default;
};
using FolderState = std::vector<FileState>;

// The state of every file beside the sheet, which may include any of them. Nothing when one cannot be read.
// `now` is by the clock of the file system.
std::optional<FolderState> StateBeside(const std::filesystem::path& sheet,
                                       std::chrono::system_clock::time_point now);

// May be shared by threads.
class PreparedSheets {
 public:
  // The sheet that was stored for this state; null when there is none.
  MSXML2::XSLTemplatePtr Find(const std::string& sheet, const FolderState& state) const;
  void Store(const std::string& sheet, const FolderState& state, const MSXML2::XSLTemplatePtr& prepared);

 private:
  struct Entry {
    FolderState state;
    MSXML2::XSLTemplatePtr prepared;
  };
  mutable std::mutex mutex_;
  std::map<std::string, Entry> entries_;  // by path; a suite has a handful of sheets
};

}  // namespace OrvCommon
