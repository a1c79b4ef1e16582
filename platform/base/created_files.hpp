// The files that one run has made.
#pragma once

#include <sys/stat.h>

#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <string>

#include "platform/base/content_digest.hpp"
#include "platform/base/file_stamp.hpp"

namespace base {

// Two runs may make a file under the same name, one after the other or at once. What a run hands on or
// deletes as its own must be what it made itself. Safe to use from several threads.
class CreatedFiles {
 public:
  // Notes that the run has made the file at the operating system's path `path`. Files that were noted long
  // ago and never forgotten are forgotten in the end.
  void Add(const std::string& path, const struct stat& status, const ContentDigest::Value& content);
  void Forget(const std::string& path);

  // Whether the run made a file there with this content. The content decides, not the file: the bytes that
  // are about to be handed on are the ones that were compared.
  bool Made(const std::string& path, const ContentDigest::Value& content) const;
  // Whether the run made a file there, and another file than that one lies there now.
  bool WasReplaced(const std::string& path, const struct stat& now) const;

 private:
  struct Record {
    FileStamp stamp;
    ContentDigest::Value content;
  };

  mutable std::mutex mutex_;
  std::map<std::string, Record, std::less<>> records_;
  std::deque<std::string> order_;  // of the records, oldest first; may hold forgotten ones
};

}  // namespace base
