#include "platform/base/growing_file.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "platform/base/file_replacement.hpp"

namespace base {
namespace {

constexpr std::string_view kReserveEnding = ".reserve";

[[noreturn]] void Raise(int code, const std::string& path) {
  throw std::system_error(code, std::generic_category(), path);
}

Descriptor Make(const std::string& path, mode_t mode) {
  Descriptor made(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_APPEND | O_CLOEXEC | O_NOFOLLOW, mode));
  if (!made.IsOpen()) Raise(errno, path);
  if (fchmod(made.Get(), mode) != 0) Raise(errno, path);
  return made;
}

// How many bytes were written; errno says why not all.
std::size_t WriteWhatFits(int descriptor, std::string_view piece) {
  std::size_t written = 0;
  errno = 0;
  while (written < piece.size()) {
    const ssize_t count = write(descriptor, piece.data() + written, piece.size() - written);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    written += static_cast<std::size_t>(count);
  }
  return written;
}

bool MeansFull(int code) {
  return code == ENOSPC || code == EDQUOT || code == EFBIG;
}

}  // namespace

GrowingFile::GrowingFile(std::string path, mode_t mode, std::size_t reserveBytes)
    : path_(std::move(path)), reserve_(path_ + std::string(kReserveEnding)), descriptor_(Make(path_, mode)) {
  try {
    const Descriptor reserve = Make(reserve_, mode);
    // Written, as not every file system keeps room for what is only promised, and not all of it zeros, which
    // some do not store.
    const std::string filling(64 * 1024, '#');
    for (std::size_t left = reserveBytes; left > 0;) {
      const std::string_view piece = std::string_view(filling).substr(0, left);
      if (WriteWhatFits(reserve.Get(), piece) != piece.size()) Raise(errno, reserve_);
      left -= piece.size();
    }
    if (fdatasync(reserve.Get()) != 0) Raise(errno, reserve_);
    const int failed = SyncFolder(path_.substr(0, path_.rfind('/') + 1));
    if (failed != 0) Raise(failed, path_);
  } catch (...) {
    unlink(reserve_.c_str());
    unlink(path_.c_str());
    throw;
  }
}

GrowingFile::~GrowingFile() {
  unlink(reserve_.c_str());
}

std::size_t GrowingFile::Write(std::string_view piece) const {
  return WriteWhatFits(descriptor_.Get(), piece);
}

void GrowingFile::Append(std::string_view piece) {
  std::size_t written = Write(piece);
  int failure = errno;
  if (written < piece.size() && MeansFull(failure) && !outOfRoom_) {
    outOfRoom_ = true;
    unlink(reserve_.c_str());
    written += Write(piece.substr(written));
    failure = errno;
  }
  if (written < piece.size()) {
    // Half a piece would spoil those that still fit.
    if (written > 0 && ftruncate(descriptor_.Get(), size_) != 0) failure = errno;
    Raise(failure == 0 ? EIO : failure, path_);
  }
  size_ += static_cast<off_t>(piece.size());
}

void GrowingFile::Sync() const {
  if (fdatasync(descriptor_.Get()) != 0) Raise(errno, path_);
}

bool GrowingFile::IsReserve(std::string_view name) {
  return name.ends_with(kReserveEnding);
}

}  // namespace base
