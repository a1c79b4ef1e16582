#include "platform/scripting/local/folder_watch.hpp"

#include <linux/magic.h>
#include <sys/inotify.h>
#include <sys/vfs.h>

#include <cstddef>
#include <cstring>

namespace Scripting::local {
namespace {

constexpr unsigned kXfs = 0x58465342;  // the header for programs does not have it

// Disks that this machine's kernel alone writes to.
bool IsOwnDisk(const std::string& folder) {
  struct statfs status {};
  if (statfs(folder.c_str(), &status) != 0) return false;
  switch (static_cast<unsigned>(status.f_type)) {
    case EXT4_SUPER_MAGIC:
    case BTRFS_SUPER_MAGIC:
    case F2FS_SUPER_MAGIC:
    case TMPFS_MAGIC:
    case OVERLAYFS_SUPER_MAGIC:
    case kXfs:
      return true;
    default:
      return false;
  }
}

}  // namespace

std::optional<int> FolderWatch::Add(const std::string& folder) {
  if (!IsOwnDisk(folder)) return std::nullopt;
  if (!descriptor_.IsOpen()) descriptor_ = base::Descriptor(inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
  if (!descriptor_.IsOpen()) return std::nullopt;
  const int number = inotify_add_watch(
      descriptor_.Get(), folder.c_str(),
      IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR);
  if (number < 0) return std::nullopt;
  return number;
}

void FolderWatch::Remove(int number) {
  if (descriptor_.IsOpen()) inotify_rm_watch(descriptor_.Get(), number);
}

void FolderWatch::TakeChanges(const Listener& listener) {
  if (!descriptor_.IsOpen()) return;
  alignas(inotify_event) char bytes[16384];
  for (;;) {
    const ssize_t count = base::ReadSome(descriptor_.Get(), bytes, sizeof bytes);
    if (count <= 0) return;
    for (std::size_t at = 0; at < static_cast<std::size_t>(count);) {
      inotify_event event{};
      std::memcpy(&event, bytes + at, sizeof event);
      const char* const name = bytes + at + sizeof event;
      at += sizeof event + event.len;
      if ((event.mask & IN_Q_OVERFLOW) != 0) {
        descriptor_ = base::Descriptor();
        listener(-1, Change::Lost, {});
        return;
      }
      if ((event.mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT | IN_IGNORED)) != 0) {
        listener(event.wd, Change::Lost, {});
      } else if (event.len > 0) {
        const bool added = (event.mask & (IN_CREATE | IN_MOVED_TO)) != 0;
        listener(event.wd, added ? Change::Added : Change::Removed, name);
      }
    }
  }
}

}  // namespace Scripting::local
