#include "suite/paths/reread_file.hpp"

#include <fcntl.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <system_error>

#include "platform/base/descriptor.hpp"

namespace suite {
namespace {

[[noreturn]] void Raise() {
  throw std::system_error(errno, std::generic_category());
}

}  // namespace

bool RereadFile::IsAsItWas(const std::filesystem::path& file) const {
  struct stat status {};
  return stamp_ && stat(file.c_str(), &status) == 0 && base::FileStamp(status) == *stamp_;
}

RereadFile::Outcome RereadFile::Read(const std::filesystem::path& file, std::size_t most) {
  const bool knownBefore = complete_ && file.native() == file_;
  if (knownBefore && content_.size() <= most && IsAsItWas(file)) return Outcome::Unchanged;
  complete_ = false;
  stamp_ = std::nullopt;
  const base::Descriptor descriptor(open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  if (!descriptor.IsOpen()) Raise();
  // Before it is read: a change in between is found the next time.
  struct stat status {};
  if (fstat(descriptor.Get(), &status) != 0) Raise();
  // Reading a pipe would block, and never end.
  if (!S_ISREG(status.st_mode)) {
    errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
    Raise();
  }
  const base::FileStamp stamp(status);
  const bool settled = stamp.HasSettledFor(settledAfter_);
  // In pieces that stay in the processor's caches: mostly they are compared and nothing else.
  std::array<char, 65536> piece;
  bool same = knownBefore;
  std::size_t filled = 0;
  ssize_t count = 0;
  while ((count = base::ReadSome(descriptor.Get(), piece.data(), piece.size())) > 0) {
    const auto size = static_cast<std::size_t>(count);
    same = same && content_.size() - filled >= size &&
           std::memcmp(content_.data() + filled, piece.data(), size) == 0;
    if (!same) {
      content_.resize(filled);
      content_.append(piece.data(), size);
    }
    filled += size;
    if (filled > most) return Outcome::TooLarge;
  }
  if (count < 0) Raise();
  same = same && filled == content_.size();
  content_.resize(filled);
  file_ = file.native();
  complete_ = true;
  if (settled) stamp_ = stamp;
  return same ? Outcome::Unchanged : Outcome::Changed;
}

}  // namespace suite
