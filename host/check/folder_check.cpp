#include "host/check/folder_check.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace orvane::host {
namespace {

namespace fs = std::filesystem;

// As this process would be judged, unlike access().
int WhyNot(const fs::path& folder, Access access) {
  const int mode = access == Access::Write ? R_OK | W_OK | X_OK : R_OK | X_OK;
  return faccessat(AT_FDCWD, folder.c_str(), mode, AT_EACCESS) == 0 ? 0 : errno;
}

}  // namespace

bool CheckFolder(const fs::path& folder, Access access, const std::string& purpose, Findings& findings) {
  std::error_code failed;
  if (!fs::is_directory(folder, failed)) {
    findings.Fail("folder.missing", folder.string(), "is no folder, and it is needed for " + purpose,
                  "make it");
    return false;
  }
  const int why = WhyNot(folder, access);
  if (why == 0) return true;
  findings.Fail("folder.access", folder.string(),
                std::string("may not be ") + (access == Access::Write ? "written" : "read") +
                    " by this account, as is needed for " + purpose + ": " + std::strerror(why),
                "give it to the account that runs the jobs");
  return false;
}

bool CheckFolderToMake(const fs::path& folder, const std::string& purpose, Findings& findings) {
  std::error_code failed;
  fs::path there = folder;
  while (!fs::exists(fs::symlink_status(there, failed)) && there.has_relative_path())
    there = there.parent_path();
  return CheckFolder(there, Access::Write, purpose, findings);
}

void CheckPrivate(const fs::path& path, const std::string& content, Findings& findings) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0 || (status.st_mode & S_IRWXO) == 0) return;
  findings.Warn("folder.private", path.string(),
                "everybody on this machine can get at it, and it holds " + content,
                "take the rights of others away: chmod o-rwx");
}

void CheckRoom(const fs::path& folder, Findings& findings) {
  struct statvfs room {};
  if (statvfs(folder.c_str(), &room) != 0) return;
  JudgeRoom(folder.string(), std::uint64_t{room.f_bavail} * room.f_frsize, findings);
}

void JudgeRoom(const std::string& where, std::uint64_t freeBytes, Findings& findings) {
  constexpr std::uint64_t kMiB = 1 << 20;
  constexpr std::uint64_t kLittle = 200 * kMiB;
  if (freeBytes >= kLittle) return;
  findings.Warn(
      "folder.room", where, "only " + std::to_string(freeBytes / kMiB) + " MiB are free",
      "make room: an archive file is written anew beside the old one, and a journal grows with the run");
}

}  // namespace orvane::host
