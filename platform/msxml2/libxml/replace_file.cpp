#include "platform/msxml2/libxml/replace_file.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>

#include "platform/automation/error.hpp"
#include "platform/scripting/local/system_error.hpp"

namespace MSXML2::libxml {
namespace {

using automation::ErrorNumber;
using Scripting::local::RaiseSystemError;

[[noreturn]] void Refuse(int code) {
  RaiseSystemError(code, ErrorNumber::PathNotFound);
}

// The file that a link leads to: replacing the link itself would leave the real file as it is.
std::string Resolved(std::string target) {
  struct stat status {};
  if (lstat(target.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) return target;
  const std::unique_ptr<char, void (*)(void*)> real(realpath(target.c_str(), nullptr), std::free);
  if (!real) Refuse(errno);
  return real.get();
}

// One name per target: what a process that was killed left behind is taken over by the next save.
std::string NameBeside(const std::string& folder, const std::string& target) {
  const std::string_view leaf = std::string_view(target).substr(target.rfind('/') + 1);
  std::string name = "." + std::string(leaf) + ".saving";
  if (name.size() > NAME_MAX) name = "." + std::to_string(std::hash<std::string_view>{}(leaf)) + ".saving";
  return folder + name;
}

std::string FolderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "./" : path.substr(0, slash + 1);
}

// The permissions of the file that is replaced; nothing when there is none.
std::optional<mode_t> RequireWritable(const std::string& target) {
  struct stat status {};
  if (stat(target.c_str(), &status) != 0) {
    if (errno != ENOENT) Refuse(errno);
    return std::nullopt;
  }
  if (S_ISDIR(status.st_mode)) Refuse(EISDIR);
  constexpr mode_t kAnyWriter = S_IWUSR | S_IWGRP | S_IWOTH;
  // The superuser may write everything; a file marked as read-only is meant to stay as it is all the same.
  if ((status.st_mode & kAnyWriter) == 0 || access(target.c_str(), W_OK) != 0) Refuse(EACCES);
  return status.st_mode & 07777U;
}

}  // namespace

FileReplacement::FileReplacement(std::string target)
    : target_(Resolved(std::move(target))),
      folder_(FolderOf(target_)),
      beside_(NameBeside(folder_, target_)) {
  const std::optional<mode_t> mode = RequireWritable(target_);
  unlink(beside_.c_str());
  descriptor_ = open(beside_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0666);
  if (descriptor_ < 0) Refuse(errno);
  if (mode && fchmod(descriptor_, *mode) != 0) {
    const int code = errno;
    close(descriptor_);
    unlink(beside_.c_str());
    Refuse(code);
  }
}

FileReplacement::~FileReplacement() {
  if (descriptor_ >= 0) close(descriptor_);
  if (!beside_.empty()) unlink(beside_.c_str());
}

void FileReplacement::Write(std::string_view data) {
  while (!data.empty()) {
    const ssize_t written = write(descriptor_, data.data(), data.size());
    if (written < 0) {
      if (errno == EINTR) continue;
      Refuse(errno);
    }
    data.remove_prefix(static_cast<std::size_t>(written));
  }
}

void FileReplacement::Commit() {
  if (fsync(descriptor_) != 0) Refuse(errno);
  const int descriptor = descriptor_;
  descriptor_ = -1;
  if (close(descriptor) != 0) Refuse(errno);
  if (rename(beside_.c_str(), target_.c_str()) != 0) Refuse(errno);
  beside_.clear();
  const int folder = open(folder_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (folder < 0) Refuse(errno);
  const int outcome = fsync(folder);
  const int code = errno;
  close(folder);
  // Some file systems cannot sync a folder; they say so and have nothing to lose by it.
  if (outcome != 0 && code != EINVAL) Refuse(code);
}

}  // namespace MSXML2::libxml
