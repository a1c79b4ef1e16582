#include "suite/paths/reread_file.hpp"

#include <fcntl.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <system_error>

#include "platform/base/descriptor.hpp"
#include "suite/paths/native_path.hpp"

namespace suite {
namespace {

[[noreturn]] void Raise() {
  throw std::system_error(errno, std::generic_category());
}

}  // namespace

bool RereadFile::IsAsItWas(const std::string& file, std::size_t most) const {
  struct stat status {};
  return complete_ && stamp_ && file == file_ && content_.size() <= most &&
         stat(file.c_str(), &status) == 0 && base::FileStamp(status) == *stamp_;
}

RereadFile::Outcome RereadFile::Read(std::string_view path, std::string_view base, std::size_t most) {
  if (IsAsItWas(SpelledPath(path, base), most)) return Outcome::Unchanged;
  return Read(NativePath(path, base), most);
}

RereadFile::Outcome RereadFile::Read(const std::filesystem::path& file, std::size_t most) {
  if (IsAsItWas(file.native(), most)) return Outcome::Unchanged;
  const bool knownBefore = complete_ && file.native() == file_;
  complete_ = false;
  stamp_ = std::nullopt;
  file_ = file.native();
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
  complete_ = true;
  if (settled) stamp_ = stamp;
  return same ? Outcome::Unchanged : Outcome::Changed;
}

}  // namespace suite
