// A file descriptor that is closed at the end, and whole reads and writes on one.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace base {

class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int descriptor) : descriptor_(descriptor) {}
  Descriptor(Descriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
  }
  ~Descriptor() {
    if (descriptor_ >= 0) close(descriptor_);
  }

  bool IsOpen() const { return descriptor_ >= 0; }
  int Get() const { return descriptor_; }
  // Closes it, where a network file system may report a failed write at last. 0 or an errno value.
  int Close() {
    const int descriptor = std::exchange(descriptor_, -1);
    return descriptor < 0 || close(descriptor) == 0 || errno == EINTR ? 0 : errno;
  }

 private:
  int descriptor_ = -1;
};

// Writes all bytes. 0 or an errno value; some of the bytes may be written then.
inline int WriteAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(descriptor, bytes.data(), bytes.size());
    if (written >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno != EINTR) {
      return errno;
    }
  }
  return 0;
}

// As read(2), begun again when a signal interrupts it.
inline ssize_t ReadSome(int descriptor, char* buffer, std::size_t size) {
  ssize_t count = 0;
  do {
    count = read(descriptor, buffer, size);
  } while (count < 0 && errno == EINTR);
  return count;
}

// Puts everything up to the end into `bytes`. 0 or an errno value.
inline int ReadAll(int descriptor, std::string& bytes) {
  struct stat status {};
  const bool hasSize = fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
  bytes.resize(hasSize ? static_cast<std::size_t>(status.st_size) + 1 : 0);  // room to meet the end at once
  std::size_t size = 0;
  for (;;) {
    if (size == bytes.size()) bytes.resize(std::max<std::size_t>(2 * size, 65'536));
    const ssize_t count = ReadSome(descriptor, bytes.data() + size, bytes.size() - size);
    if (count <= 0) {
      const int code = count < 0 ? errno : 0;
      bytes.resize(size);
      return code;
    }
    size += static_cast<std::size_t>(count);
  }
}

// The content of the regular file at a path, links followed; EISDIR for anything else. 0 or an errno value.
inline int ReadFile(const std::string& path, std::string& bytes) {
  // Opening a pipe would wait for its other end.
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  struct stat status {};
  if (!file.IsOpen() || fstat(file.Get(), &status) != 0) return errno;
  if (!S_ISREG(status.st_mode)) return EISDIR;
  return ReadAll(file.Get(), bytes);
}

}  // namespace base
