#include "platform/base/file_replacement.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <functional>
#include <system_error>
#include <utility>

namespace base {
namespace {

constexpr int kMostWriters = 1000;
constexpr std::string_view kEnding = ".saving";

[[noreturn]] void Refuse(int code) {
  throw std::system_error(code, std::generic_category());
}

std::string FolderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "./" : path.substr(0, slash + 1);
}

std::optional<struct stat> StatusOf(const std::string& path) {
  struct stat status {};
  if (lstat(path.c_str(), &status) == 0) return status;
  if (errno != ENOENT) Refuse(errno);
  return std::nullopt;
}

// The file that a link leads to: replacing the link itself would leave the real file as it is.
std::string Resolved(std::string target, std::optional<struct stat>& existing) {
  for (int links = 0; existing && S_ISLNK(existing->st_mode); ++links) {
    if (links == kMostLinks) Refuse(ELOOP);
    const std::string next = std::filesystem::read_symlink(target).string();
    target = next.starts_with('/') ? next : FolderOf(target) + next;
    existing = StatusOf(target);
  }
  return target;
}

void RequireWritable(const std::string& target, const struct stat& existing) {
  if (S_ISDIR(existing.st_mode)) Refuse(EISDIR);
  if (!S_ISREG(existing.st_mode)) Refuse(EACCES);
  constexpr mode_t kAnyWriter = S_IWUSR | S_IWGRP | S_IWOTH;
  // The superuser may write everything; a file marked as read-only is meant to stay as it is all the same.
  if ((existing.st_mode & kAnyWriter) == 0 || access(target.c_str(), W_OK) != 0) Refuse(EACCES);
}

// The same few names for a target each time, so that the next writer finds, and removes, what a killed one
// left.
std::string NameBeside(std::string_view leaf, int writer) {
  const std::string ending = std::string(kEnding) + (writer == 1 ? "" : std::to_string(writer));
  const std::string name = "." + std::string(leaf) + ending;
  if (name.size() <= NAME_MAX) return name;
  return "." + std::to_string(std::hash<std::string_view>{}(leaf)) + ending;
}

bool LeadsTo(const std::string& path, int descriptor) {
  struct stat named {};
  struct stat open {};
  return lstat(path.c_str(), &named) == 0 && fstat(descriptor, &open) == 0 && named.st_dev == open.st_dev &&
         named.st_ino == open.st_ino;
}

bool Lock(int descriptor, int how) {
  while (flock(descriptor, how) != 0) {
    if (errno != EINTR) return false;
  }
  return true;
}

// Removes the file at `path` if its writer no longer lives; whether it is gone.
bool RemoveLeftover(const std::string& path) {
  constexpr int kFlags = O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
  // A network file system locks only what is open for writing, others lock what may be read, too.
  Descriptor left(open(path.c_str(), O_RDWR | kFlags));
  if (!left.IsOpen() && errno == EACCES) left = Descriptor(open(path.c_str(), O_RDONLY | kFlags));
  if (!left.IsOpen()) return errno == ENOENT;
  if (!Lock(left.Get(), LOCK_EX | LOCK_NB)) return false;
  return !LeadsTo(path, left.Get()) || unlink(path.c_str()) == 0;
}

template <class Visit>
void ForEachHidden(const std::string& folder, const Visit& visit) {
  std::error_code failed;
  std::filesystem::directory_iterator entries(folder, failed);
  for (; !failed && entries != std::filesystem::directory_iterator(); entries.increment(failed)) {
    const std::string name = entries->path().filename().string();
    if (name.starts_with('.')) visit(entries->path().string(), name);
  }
}

// Creates the locked file for the new content; `path` receives its path.
Descriptor MakeBeside(const std::string& folder, std::string_view leaf, std::string& path) {
  int writer = 1;
  while (writer <= kMostWriters) {
    path = folder + NameBeside(leaf, writer);
    Descriptor made(open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0640));
    if (made.IsOpen()) {
      // Between these two calls another writer may take the file for a leftover and remove it. Where files
      // cannot be locked, nobody removes any.
      Lock(made.Get(), LOCK_EX);
      if (LeadsTo(path, made.Get())) {
        RemoveLeftover(folder + NameBeside(leaf, writer + 1));  // of one that wrote the same file twice
        return made;
      }
    } else if (errno != EEXIST) {
      Refuse(errno);
    } else if (!RemoveLeftover(path)) {
      ++writer;
    }
  }
  Refuse(EBUSY);
}

}  // namespace

FileReplacement::FileReplacement(std::string target, std::optional<struct stat> existing)
    : target_(Resolved(std::move(target), existing)),
      folder_(FolderOf(target_)),
      replaces_(existing.has_value()) {
  const std::string_view leaf = std::string_view(target_).substr(target_.rfind('/') + 1);
  if (leaf.size() > NAME_MAX) Refuse(ENAMETOOLONG);
  if (existing) RequireWritable(target_, *existing);
  descriptor_ = MakeBeside(folder_, leaf, beside_);
  if (!existing) return;
  // Giving a file away is the superuser's right; whoever may write the folder replaces the file all the same.
  const int given = fchown(descriptor_.Get(), existing->st_uid, existing->st_gid);
  static_cast<void>(given);
  if (fchmod(descriptor_.Get(), existing->st_mode & 07777U) != 0) {
    const int code = errno;
    unlink(beside_.c_str());
    Refuse(code);
  }
}

FileReplacement::FileReplacement(const std::string& target) : FileReplacement(target, StatusOf(target)) {}

FileReplacement::~FileReplacement() {
  if (!beside_.empty()) unlink(beside_.c_str());
}

void FileReplacement::Write(std::string_view data) {
  if (const int code = WriteAll(descriptor_.Get(), data); code != 0) Refuse(code);
}

struct stat FileReplacement::Status() const {
  struct stat status {};
  if (fstat(descriptor_.Get(), &status) != 0) Refuse(errno);
  return status;
}

void FileReplacement::RequireFreeName() const {
  struct stat status {};
  if (lstat(target_.c_str(), &status) == 0) Refuse(EEXIST);
  if (errno != ENOENT) Refuse(errno);
  if (lstat(beside_.c_str(), &status) != 0) Refuse(errno);
}

struct stat FileReplacement::Commit(Durability durability) {
  // A network file system reports a failed write here at the latest. The descriptor stays open, and the file
  // locked, until it has its name.
  if (fsync(descriptor_.Get()) != 0) Refuse(errno);
  if (!replaces_) {
    if (const int code = RenameToFreeName(beside_, target_); code != 0) Refuse(code);
  } else if (rename(beside_.c_str(), target_.c_str()) != 0) {
    Refuse(errno);
  }
  return Finish(durability);
}

void FileReplacement::CommitOver(const std::function<bool(int descriptor)>& isExpected, Durability durability,
                                 std::chrono::milliseconds patience) {
  if (fsync(descriptor_.Get()) != 0) Refuse(errno);
  if (!replaces_) Refuse(ESTALE);
  const Descriptor locked = LockTarget(patience);
  if (!isExpected(locked.Get())) Refuse(ESTALE);
  if (rename(beside_.c_str(), target_.c_str()) != 0) Refuse(errno);
  Finish(durability);
}

// The lock is the file's and not the name's: whoever waited for it may hold that of a file which another has
// replaced meanwhile, and starts again with the one that has the name now.
Descriptor FileReplacement::LockTarget(std::chrono::milliseconds patience) const {
  constexpr timespec kPause{0, 2'000'000};
  const auto deadline = std::chrono::steady_clock::now() + patience;
  while (true) {
    // A network file system locks only what is open for writing.
    Descriptor target(open(target_.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (!target.IsOpen()) Refuse(errno == ENOENT ? ESTALE : errno);
    const bool locked = Lock(target.Get(), LOCK_EX | LOCK_NB);
    const bool taken = !locked && errno == EWOULDBLOCK;
    if (!taken && LeadsTo(target_, target.Get())) return target;
    if (std::chrono::steady_clock::now() >= deadline) Refuse(EBUSY);
    if (taken) nanosleep(&kPause, nullptr);
  }
}

struct stat FileReplacement::Finish(Durability durability) {
  beside_.clear();
  const struct stat status = Status();
  descriptor_ = Descriptor();
  if (durability == Durability::ContentAndName) {
    if (const int code = SyncFolder(folder_); code != 0) Refuse(code);
  }
  return status;
}

void RemoveLeftovers(const std::string& folder) {
  ForEachHidden(folder, [](const std::string& path, std::string_view name) {
    const std::size_t ending = name.rfind(kEnding);
    const bool beside =
        ending != std::string_view::npos &&
        name.find_first_not_of("0123456789", ending + kEnding.size()) == std::string_view::npos;
    if (beside) RemoveLeftover(path);
  });
}

void RemoveFormerLeftovers(const std::string& folder, std::string_view ending) {
  constexpr time_t kDay = 86'400;
  const time_t now = time(nullptr);
  ForEachHidden(folder, [&](const std::string& path, std::string_view name) {
    struct stat status {};
    const bool old = name.ends_with(ending) && lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
                     now - status.st_mtim.tv_sec >= kDay;
    if (old) unlink(path.c_str());
  });
}

int RenameToFreeName(const std::string& from, const std::string& to) {
  if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return 0;
  if (errno != EINVAL && errno != ENOSYS) return errno;
  // Not every file system can do so; a link refuses a name that is taken as well.
  if (link(from.c_str(), to.c_str()) != 0) return errno;
  unlink(from.c_str());
  return 0;
}

int SyncFolder(const std::string& folder) {
  const Descriptor opened(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!opened.IsOpen()) return errno;
  if (fsync(opened.Get()) == 0 || errno == EINVAL) return 0;
  return errno;
}

}  // namespace base
