#include "platform/base/created_files.hpp"

#include <cstddef>

namespace base {
namespace {

// A page is forgotten when its mail is sent; what remains are pages of unsent mails and archive files.
constexpr std::size_t kMostRecords = 1000;

}  // namespace

void CreatedFiles::Add(const std::string& path, const struct stat& status,
                       const ContentDigest::Value& content) {
  const std::lock_guard lock(mutex_);
  records_.insert_or_assign(path, Record{FileStamp(status), content});
  order_.push_back(path);
  while (order_.size() > kMostRecords) {
    records_.erase(order_.front());
    order_.pop_front();
  }
}

void CreatedFiles::Forget(const std::string& path) {
  const std::lock_guard lock(mutex_);
  records_.erase(path);
}

bool CreatedFiles::Made(const std::string& path, const ContentDigest::Value& content) const {
  const std::lock_guard lock(mutex_);
  const auto record = records_.find(path);
  return record != records_.end() && record->second.content == content;
}

bool CreatedFiles::WasReplaced(const std::string& path, const struct stat& now) const {
  const std::lock_guard lock(mutex_);
  const auto record = records_.find(path);
  return record != records_.end() && !(record->second.stamp == FileStamp(now));
}

}  // namespace base
