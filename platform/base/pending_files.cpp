#include "platform/base/pending_files.hpp"

#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "platform/base/descriptor.hpp"

namespace base {
namespace {

// From the start of the file, wherever its descriptor stands: it stands behind what was written.
int ReadAllOf(int descriptor, std::string& bytes) {
  return lseek(descriptor, 0, SEEK_SET) == 0 ? ReadAll(descriptor, bytes) : errno;
}

}  // namespace

PendingFiles::~PendingFiles() {
  try {
    Publish();
  } catch (const std::system_error&) {
  }
}

void PendingFiles::Keep(std::unique_ptr<FileReplacement> file) {
  file->RequireFreeName();
  const std::lock_guard lock(mutex_);
  std::string target = file->Target();
  files_.insert_or_assign(std::move(target), Kept{std::move(file)});
}

bool PendingFiles::Holds(const std::string& target) const {
  const std::lock_guard lock(mutex_);
  return files_.contains(target);
}

std::optional<std::string> PendingFiles::Content(const std::string& target) const {
  const std::lock_guard lock(mutex_);
  const auto file = files_.find(target);
  std::string bytes;
  if (file == files_.end() || ReadAllOf(file->second.file->Content(), bytes) != 0) return std::nullopt;
  return bytes;
}

std::optional<ContentDigest::Value> PendingFiles::DigestOf(const std::string& target) const {
  const std::optional<std::string> content = Content(target);
  if (!content) return std::nullopt;
  return base::DigestOf(*content);
}

void PendingFiles::Drop(const std::string& target) {
  const std::lock_guard lock(mutex_);
  files_.erase(target);
}

bool PendingFiles::Publish() {
  const std::lock_guard lock(mutex_);
  return PublishAll();
}

bool PendingFiles::PublishAll() {
  const bool any = !files_.empty();
  int failure = 0;
  for (auto each = files_.begin(); each != files_.end();) {
    Kept& kept = each->second;
    if (kept.failure == 0) {
      try {
        kept.file->Commit(FileReplacement::Durability::Content);
        folders_.insert(kept.file->Folder());
      } catch (const std::system_error& error) {
        kept.failure = error.code().value();
      }
    }
    if (kept.failure == 0) {
      each = files_.erase(each);
    } else {
      failure = kept.failure;
      ++each;
    }
  }
  if (failure != 0) throw std::system_error(failure, std::generic_category());
  return any;
}

void PendingFiles::NoteName(const std::string& folder) {
  const std::lock_guard lock(mutex_);
  folders_.insert(folder);
}

void PendingFiles::MakeDurable() {
  const std::lock_guard lock(mutex_);
  PublishAll();
  while (!folders_.empty()) {
    const int code = SyncFolder(*folders_.begin());
    // A folder that is gone has taken its names along.
    if (code != 0 && code != ENOENT) throw std::system_error(code, std::generic_category());
    folders_.erase(folders_.begin());
  }
}

}  // namespace base
