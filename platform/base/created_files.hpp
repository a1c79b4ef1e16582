// The files that one run has made.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>

#include "platform/base/content_digest.hpp"

namespace base {

// Two runs may make a file under the same name, one after the other or at once. What a run hands on or
// deletes as its own must be what it made itself. Safe to use from several threads.
class CreatedFiles {
 public:
  // Notes that the run has made the file at the operating system's path `path`. The oldest
  // records are dropped when there are too many.
  void Add(const std::string& path, const struct stat& status, const ContentDigest::Value& content);
  void Forget(const std::string& path);

  // Whether the run made a file there with this content. The content decides, not the file: the bytes that
  // are about to be handed on are the ones that were compared.
  bool Made(const std::string& path, const ContentDigest::Value& content) const;
  // Whether the run made a file there, and another file than that one lies there now. Other rights, links or
  // times make no other file; where they differ, the content decides.
  bool WasReplaced(const std::string& path, const struct stat& now) const;

 private:
  struct Record {
    struct stat status {};
    ContentDigest::Value content;
    std::uint64_t sequence = 0;
  };

  void Remove(std::string path);  // with the mutex held

  mutable std::mutex mutex_;
  std::map<std::string, Record, std::less<>> records_;
  std::map<std::uint64_t, std::string> order_;  // the paths of the records by sequence, oldest first
  std::uint64_t lastSequence_ = 0;
};

}  // namespace base
