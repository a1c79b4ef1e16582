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
      if (const int code = WriteAll(reserve.Get(), piece); code != 0) Raise(code, reserve_);
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

int GrowingFile::Write(std::string_view piece) const {
  const int failure = WriteAll(descriptor_.Get(), piece);
  return failure != 0 && ftruncate(descriptor_.Get(), size_) != 0 ? errno : failure;
}

void GrowingFile::Append(std::string_view piece) {
  int failure = Write(piece);
  if (MeansFull(failure) && !outOfRoom_) {
    outOfRoom_ = true;
    unlink(reserve_.c_str());
    failure = Write(piece);
  }
  if (failure != 0) Raise(failure, path_);
  size_ += static_cast<off_t>(piece.size());
}

void GrowingFile::Sync() const {
  if (fdatasync(descriptor_.Get()) != 0) Raise(errno, path_);
}

bool GrowingFile::IsReserve(std::string_view name) {
  return name.ends_with(kReserveEnding);
}

}  // namespace base
