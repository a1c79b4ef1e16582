#include "suite/load_xsls/prepared_sheets.hpp"

#include <sys/stat.h>

#include <algorithm>
#include <cstddef>
#include <system_error>
#include <utility>

#include "platform/base/open_folder.hpp"
#include "suite/paths/reread_file.hpp"

namespace OrvCommon {
namespace {

constexpr std::size_t kLargestRead = 1U << 20;

}  // namespace

std::optional<FolderState> StateBeside(const std::filesystem::path& sheet,
                                       std::chrono::system_clock::time_point now) try {
  const std::filesystem::path folder = sheet.parent_path();
  const base::OpenFolder entries(opendir(folder.c_str()));
  if (!entries) return std::nullopt;
  FolderState state;
  while (const dirent* entry = readdir(entries.get())) {
    struct stat status {};
    if (fstatat(dirfd(entries.get()), entry->d_name, &status, 0) != 0) return std::nullopt;
    if (!S_ISREG(status.st_mode)) continue;
    FileState file{entry->d_name, base::FileStamp(status)};
    if (!file.stamp.HasSettledFor(base::kAnyGranularity, now)) {
      suite::RereadFile content;
      if (content.Read(folder / file.name, kLargestRead) == suite::RereadFile::Outcome::TooLarge) {
        return std::nullopt;
      }
      file.content = content.Content();
    }
    state.push_back(std::move(file));
  }
  if (state.empty()) return std::nullopt;
  std::sort(state.begin(), state.end(),
            [](const FileState& left, const FileState& right) { return left.name < right.name; });
  return state;
} catch (const std::system_error&) {
  return std::nullopt;  // a file that cannot be read
}

MSXML2::XSLTemplatePtr PreparedSheets::Find(const std::string& sheet, const FolderState& state) const {
  const std::lock_guard lock(mutex_);
  const auto found = entries_.find(sheet);
  return found == entries_.end() || found->second.state != state ? nullptr : found->second.prepared;
}

void PreparedSheets::Store(const std::string& sheet, const FolderState& state,
                           const MSXML2::XSLTemplatePtr& prepared) {
  const std::lock_guard lock(mutex_);
  entries_[sheet] = {state, prepared};
}

}  // namespace OrvCommon
