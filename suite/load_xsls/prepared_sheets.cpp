#include "suite/load_xsls/prepared_sheets.hpp"

#include <sys/stat.h>

#include <ctime>
#include <set>

namespace OrvCommon {
namespace {

// File systems note the time of a change in steps of milliseconds up to two seconds.
constexpr std::time_t kSettledAfterSeconds = 3;

}  // namespace

std::optional<std::string> FolderState(const std::filesystem::path& sheet) {
  std::error_code failed;
  std::set<std::string> lines;
  const std::time_t now = std::time(nullptr);
  for (std::filesystem::directory_iterator entry(sheet.parent_path(), failed), end; !failed && entry != end;
       entry.increment(failed)) {
    struct stat status {};
    if (stat(entry->path().c_str(), &status) != 0) return std::nullopt;
    if (!S_ISREG(status.st_mode)) continue;
    if (status.st_mtim.tv_sec > now - kSettledAfterSeconds ||
        status.st_ctim.tv_sec > now - kSettledAfterSeconds) {
      return std::nullopt;
    }
    lines.insert(entry->path().filename().string() + '/' + std::to_string(status.st_dev) + ':' +
                 std::to_string(status.st_ino) + ':' + std::to_string(status.st_size) + ':' +
                 std::to_string(status.st_mtim.tv_sec) + '.' + std::to_string(status.st_mtim.tv_nsec) + ':' +
                 std::to_string(status.st_ctim.tv_sec) + '.' + std::to_string(status.st_ctim.tv_nsec));
  }
  if (failed || lines.empty()) return std::nullopt;
  std::string state;
  for (const std::string& line : lines) state += line + '/';
  return state;
}

MSXML2::XSLTemplatePtr PreparedSheets::Find(const std::string& sheet, const std::string& state) const {
  const std::lock_guard lock(mutex_);
  const auto found = entries_.find(sheet);
  return found == entries_.end() || found->second.state != state ? nullptr : found->second.prepared;
}

void PreparedSheets::Keep(const std::string& sheet, const std::string& state,
                          const MSXML2::XSLTemplatePtr& prepared) {
  const std::lock_guard lock(mutex_);
  entries_[sheet] = {state, prepared};
}

}  // namespace OrvCommon
