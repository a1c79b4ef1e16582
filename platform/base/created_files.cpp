#include "platform/base/created_files.hpp"

#include <fcntl.h>

#include <cstddef>

#include "platform/base/descriptor.hpp"
#include "platform/base/file_stamp.hpp"

namespace base {
namespace {

// A page is forgotten when its mail is sent; what remains are pages of unsent mails and archive files.
constexpr std::size_t kMostRecords = 1000;

bool HasContent(const std::string& path, const ContentDigest::Value& expected) {
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
  return file.IsOpen() && DigestOfFile(file.Get()) == expected;
}

}  // namespace

void CreatedFiles::Add(const std::string& path, const struct stat& status,
                       const ContentDigest::Value& content) {
  const std::lock_guard lock(mutex_);
  Remove(path);
  order_.emplace(++lastSequence_, path);
  records_.emplace(path, Record{status, content, lastSequence_});
  if (records_.size() > kMostRecords) Remove(order_.begin()->second);
}

void CreatedFiles::Forget(const std::string& path) {
  const std::lock_guard lock(mutex_);
  Remove(path);
}

bool CreatedFiles::Made(const std::string& path, const ContentDigest::Value& content) const {
  const std::lock_guard lock(mutex_);
  const auto record = records_.find(path);
  return record != records_.end() && record->second.content == content;
}

bool CreatedFiles::WasReplaced(const std::string& path, const struct stat& now) const {
  Record made;
  {
    const std::lock_guard lock(mutex_);
    const auto record = records_.find(path);
    if (record == records_.end()) return false;
    made = record->second;
  }
  if (!FileStamp(made.status).IsSameFile(FileStamp(now))) return true;
  if (FileStamp(made.status) == FileStamp(now)) return false;
  return made.status.st_size != now.st_size || !HasContent(path, made.content);
}

void CreatedFiles::Remove(std::string path) {
  const auto record = records_.find(path);
  if (record == records_.end()) return;
  order_.erase(record->second.sequence);
  records_.erase(record);
}

}  // namespace base
