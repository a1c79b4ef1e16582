#include "platform/base/content_digest.hpp"

#include <unistd.h>

#include <cerrno>
#include <vector>

namespace base {

ContentDigest::Value DigestOf(std::string_view content) {
  ContentDigest digest;
  digest.Add(content);
  return digest.Get();
}

std::optional<ContentDigest::Value> DigestOfFile(int descriptor) {
  ContentDigest digest;
  std::vector<char> chunk(std::size_t{1} << 16);
  while (true) {
    const ssize_t count = read(descriptor, chunk.data(), chunk.size());
    if (count == 0) return digest.Get();
    if (count > 0) {
      digest.Add({chunk.data(), static_cast<std::size_t>(count)});
    } else if (errno != EINTR) {
      return std::nullopt;
    }
  }
}

}  // namespace base
