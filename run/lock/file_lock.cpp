#include "run/lock/file_lock.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <ctime>
#include <system_error>

namespace orvane_lock {
namespace {

[[noreturn]] void Raise(const std::filesystem::path& file, int code) {
  throw std::system_error(code, std::generic_category(), file.string());
}

// Neither follows a link out of the suite nor waits for the other end of a pipe.
constexpr int kFlags = O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;

int OpenFile(const std::filesystem::path& file) {
  const int descriptor = open(file.c_str(), kFlags | O_RDWR | O_CREAT, 0640);
  if (descriptor < 0) Raise(file, errno);
  struct stat status {};
  if (fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)) return descriptor;
  close(descriptor);
  Raise(file, EINVAL);
}

// Whether the name still leads to the open file: somebody may have removed it since.
bool IsStillNamed(const std::filesystem::path& file, int descriptor) {
  struct stat named {};
  struct stat opened {};
  return stat(file.c_str(), &named) == 0 && fstat(descriptor, &opened) == 0 &&
         named.st_dev == opened.st_dev && named.st_ino == opened.st_ino;
}

int Lock(int descriptor, int kind) {
  int result = 0;
  do {
    result = flock(descriptor, kind | LOCK_NB);
  } while (result != 0 && errno == EINTR);
  return result == 0 ? 0 : errno;
}

// One line of four fields with a tab between them.
std::string LineOf(const Holder& holder) {
  return std::to_string(holder.process) + '\t' + holder.host + '\t' + holder.job + '\t' + holder.since + '\n';
}

Holder HolderIn(std::string_view line) {
  Holder holder;
  const auto next = [&line] {
    const std::size_t end = line.find('\t');
    const std::string_view field = line.substr(0, end);
    line = end == std::string_view::npos ? std::string_view() : line.substr(end + 1);
    return field;
  };
  const std::string_view process = next();
  std::from_chars(process.data(), process.data() + process.size(), holder.process);
  holder.host = next();
  holder.job = next();
  holder.since = next();
  return holder;
}

}  // namespace

std::string Description(const Holder& holder) {
  if (holder.process == 0) return "another process";
  const std::string job = holder.job.empty() ? "waiting for the suite's database" : holder.job;
  return "process " + std::to_string(holder.process) + " on " + holder.host + " (" + job + ", since " +
         holder.since + " UTC)";
}

Holder ThisProcess(std::string_view job) {
  std::array<char, 256> host{};
  if (gethostname(host.data(), host.size() - 1) != 0) host[0] = '\0';
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
  gmtime_r(&now, &parts);
  std::array<char, 32> since{};
  std::strftime(since.data(), since.size(), "%Y-%m-%d %H:%M:%S", &parts);
  return {.process = getpid(), .host = host.data(), .job = std::string(job), .since = since.data()};
}

std::unique_ptr<FileLock> FileLock::TryTake(const std::filesystem::path& file, const Holder& holder) {
  for (;;) {
    std::unique_ptr<FileLock> lock(new FileLock(OpenFile(file)));
    const int failure = Lock(lock->descriptor_, LOCK_EX);
    if (failure == EWOULDBLOCK) return nullptr;
    if (failure != 0) Raise(file, failure);
    if (!IsStillNamed(file, lock->descriptor_)) continue;
    lock->WriteHolder(holder);
    return lock;
  }
}

std::optional<Holder> FileLock::HolderOf(const std::filesystem::path& file) noexcept try {
  const int descriptor = open(file.c_str(), kFlags | O_RDONLY);
  if (descriptor < 0) return std::nullopt;
  const FileLock asking(descriptor);
  // A shared lock, so that those who ask do not take each other for the holder.
  if (Lock(descriptor, LOCK_SH) != EWOULDBLOCK) return std::nullopt;
  std::array<char, 1024> text{};
  const ssize_t count = pread(descriptor, text.data(), text.size(), 0);
  const std::string_view read(text.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
  const std::size_t end = read.find('\n');
  return end == std::string_view::npos ? Holder() : HolderIn(read.substr(0, end));
} catch (...) {
  return std::nullopt;
}

FileLock::~FileLock() {
  close(descriptor_);
}

// In one write, and cut off afterwards: whoever reads meanwhile finds one whole line in front.
void FileLock::WriteHolder(const Holder& holder) noexcept try {
  const std::string line = LineOf(holder);
  if (pwrite(descriptor_, line.data(), line.size(), 0) == static_cast<ssize_t>(line.size())) {
    static_cast<void>(!ftruncate(descriptor_, static_cast<off_t>(line.size())));
  }
} catch (...) {
}

}  // namespace orvane_lock
