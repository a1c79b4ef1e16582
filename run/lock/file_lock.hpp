// A file that one process at a time holds, and that says who holds it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace orvane_lock {

// Who holds a lock, as it has written itself.
struct Holder {
  std::int64_t process = 0;
  std::string host;
  std::string job;    // what it is doing; empty while it waits for the other half of a lock
  std::string since;  // "YYYY-MM-DD HH:MM:SS" in UTC

  bool operator==(const Holder&) const = default;
};

// "process 4711 on alpha (OrvaneProcess.Archive, since 2026-11-22 00:30:00 UTC)"
std::string Description(const Holder& holder);

// This process, as of now.
Holder ThisProcess(std::string_view job);

// Held by flock until the object goes or the process ends, however it ends: there is no lock to clear up
// after a kill. The file stays; what it says counts only while it is held.
//
// Over NFS the kernel of a Linux client takes such a lock at the server, so machines that share the folder
// share the lock as well.
class FileLock {
 public:
  // Takes the lock and writes `holder` into the file, which is made when it is missing; null when somebody
  // else holds it. Raises std::system_error when the file cannot be made, opened or locked.
  static std::unique_ptr<FileLock> TryTake(const std::filesystem::path& file, const Holder& holder);

  // Who holds the lock now; nothing when it is free, or is none. What the holder has not written stays empty.
  // Raises nothing.
  static std::optional<Holder> HolderOf(const std::filesystem::path& file) noexcept;

  ~FileLock();
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;

  // Writes who holds it anew. A file that cannot be written is no reason to stop: the lock holds.
  void WriteHolder(const Holder& holder) noexcept;

 private:
  explicit FileLock(int descriptor) : descriptor_(descriptor) {}

  int descriptor_;
};

}  // namespace orvane_lock
