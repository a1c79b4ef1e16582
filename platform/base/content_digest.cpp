#include "platform/base/content_digest.hpp"

#include <vector>

#include "platform/base/descriptor.hpp"

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
    const ssize_t count = ReadSome(descriptor, chunk.data(), chunk.size());
    if (count < 0) return std::nullopt;
    if (count == 0) return digest.Get();
    digest.Add({chunk.data(), static_cast<std::size_t>(count)});
  }
}

}  // namespace base
