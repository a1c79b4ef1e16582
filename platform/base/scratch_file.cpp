#include "platform/base/scratch_file.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>
#include <utility>

namespace base {
namespace {

Descriptor NamelessFile(const std::string& folder) {
  Descriptor file(open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600));
  if (file.IsOpen()) return file;
  // Not every file system knows files that never had a name.
  std::string name = folder + "/.spareXXXXXX";
  file = Descriptor(mkostemp(name.data(), O_CLOEXEC));
  if (!file.IsOpen()) throw std::system_error(errno, std::generic_category(), folder);
  unlink(name.c_str());
  return file;
}

}  // namespace

ScratchFile::ScratchFile(const std::string& folder, std::function<void(int error)> onFull)
    : file_(NamelessFile(folder)), onFull_(std::move(onFull)) {}

// The smallest free piece that is large enough, or new space at the end.
ScratchFile::Piece ScratchFile::Take(std::size_t size) {
  const auto fitting = free_.lower_bound(size);
  if (fitting == free_.end()) {
    const Piece piece{end_, size};
    end_ += static_cast<off_t>(size);
    return piece;
  }
  const auto [room, offset] = *fitting;
  free_.erase(fitting);
  if (room > size) free_.emplace(room - size, offset + static_cast<off_t>(size));
  return {offset, size};
}

void ScratchFile::Write(std::string_view bytes, std::vector<Piece>& content) {
  if (bytes.empty()) return;
  const Piece piece = Take(bytes.size());
  off_t at = piece.offset;
  while (!bytes.empty()) {
    const ssize_t written = pwrite(file_.Get(), bytes.data(), bytes.size(), at);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return onFull_(errno);
    at += written;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  if (!content.empty() && content.back().offset + static_cast<off_t>(content.back().size) == piece.offset) {
    content.back().size += piece.size;
  } else {
    content.push_back(piece);
  }
}

std::string ScratchFile::Read(const std::vector<Piece>& content) const {
  std::string bytes(SizeOf(content), '\0');
  std::size_t filled = 0;
  for (const Piece& piece : content) {
    for (std::size_t done = 0; done < piece.size;) {
      const ssize_t count = pread(file_.Get(), bytes.data() + filled + done, piece.size - done,
                                  piece.offset + static_cast<off_t>(done));
      if (count < 0 && errno == EINTR) continue;
      if (count <= 0) {
        onFull_(count < 0 ? errno : EIO);
        return bytes;
      }
      done += static_cast<std::size_t>(count);
    }
    filled += piece.size;
  }
  return bytes;
}

void ScratchFile::GiveBack(const std::vector<Piece>& content) {
  for (const Piece& piece : content) free_.emplace(piece.size, piece.offset);
}

std::size_t ScratchFile::SizeOf(const std::vector<Piece>& content) {
  std::size_t size = 0;
  for (const Piece& piece : content) size += piece.size;
  return size;
}

}  // namespace base
