#include "suite/load_xsls/prepared_sheets.hpp"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <memory>
#include <system_error>
#include <vector>

#include "suite/paths/reread_file.hpp"

namespace OrvCommon {
namespace {

// File systems note the time of a change in steps of milliseconds up to two seconds.
constexpr std::time_t kSettledAfterSeconds = 3;
constexpr std::size_t kLargestRead = 1U << 20;

struct CloseFolder {
  void operator()(DIR* folder) const { closedir(folder); }
};

std::optional<std::string> StateOf(const std::filesystem::path& folder, std::time_t now) {
  const std::unique_ptr<DIR, CloseFolder> entries(opendir(folder.c_str()));
  if (!entries) return std::nullopt;
  std::vector<std::string> files;
  while (const dirent* entry = readdir(entries.get())) {
    struct stat status {};
    if (fstatat(dirfd(entries.get()), entry->d_name, &status, 0) != 0) return std::nullopt;
    if (!S_ISREG(status.st_mode)) continue;
    std::string file(entry->d_name);
    for (const std::int64_t number :
         {static_cast<std::int64_t>(status.st_dev), static_cast<std::int64_t>(status.st_ino),
          std::int64_t{status.st_size}, std::int64_t{status.st_mtim.tv_sec},
          std::int64_t{status.st_mtim.tv_nsec}, std::int64_t{status.st_ctim.tv_sec},
          std::int64_t{status.st_ctim.tv_nsec}}) {
      file.append(1, '/').append(std::to_string(number));
    }
    if (status.st_mtim.tv_sec > now - kSettledAfterSeconds ||
        status.st_ctim.tv_sec > now - kSettledAfterSeconds) {
      suite::RereadFile content;
      if (content.Read(folder / entry->d_name, kLargestRead) == suite::RereadFile::Outcome::TooLarge) {
        return std::nullopt;
      }
      file.append(1, '/').append(content.Content());
    }
    files.push_back(std::move(file));
  }
  if (files.empty()) return std::nullopt;
  std::sort(files.begin(), files.end());
  std::string state;
  for (const std::string& file : files) state.append(file).append(1, '\0');
  return state;
}

}  // namespace

std::optional<std::string> FolderState(const std::filesystem::path& sheet, std::time_t now) {
  try {
    return StateOf(sheet.parent_path(), now);
  } catch (const std::system_error&) {
    return std::nullopt;  // a file that cannot be read
  }
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
