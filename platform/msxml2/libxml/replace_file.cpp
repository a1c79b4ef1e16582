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
std::string Resolved(std::string target, std::optional<struct stat>& existing) {
  if (!existing || !S_ISLNK(existing->st_mode)) return target;
  existing.reset();
  struct stat status {};
  if (stat(target.c_str(), &status) == 0) existing = status;
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

void RequireWritable(const std::string& target, const struct stat& existing) {
  if (S_ISDIR(existing.st_mode)) Refuse(EISDIR);
  constexpr mode_t kAnyWriter = S_IWUSR | S_IWGRP | S_IWOTH;
  // The superuser may write everything; a file marked as read-only is meant to stay as it is all the same.
  if ((existing.st_mode & kAnyWriter) == 0 || access(target.c_str(), W_OK) != 0) Refuse(EACCES);
}

// Makes the file. What a killed process left under the name goes: a program that still holds it open must not
// write into the new one.
int MakeAnew(const std::string& path) {
  constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW;
  const int descriptor = open(path.c_str(), kFlags, 0666);
  if (descriptor >= 0 || errno != EEXIST) return descriptor;
  unlink(path.c_str());
  return open(path.c_str(), kFlags, 0666);
}

}  // namespace

FileReplacement::FileReplacement(std::string target, std::optional<struct stat> existing)
    : target_(Resolved(std::move(target), existing)),
      folder_(FolderOf(target_)),
      beside_(NameBeside(folder_, target_)) {
  if (existing) RequireWritable(target_, *existing);
  descriptor_ = MakeAnew(beside_);
  if (descriptor_ < 0) Refuse(errno);
  if (existing && fchmod(descriptor_, existing->st_mode & 07777U) != 0) {
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
