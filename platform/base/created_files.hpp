// The files that one run has made.
#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <string_view>

#include "platform/base/file_stamp.hpp"

namespace base {

// The content of a file, as far as it takes to know it again.
class ContentDigest {
 public:
  ContentDigest() = default;
  explicit ContentDigest(std::string_view bytes) { Append(bytes); }

  void Append(std::string_view bytes);
  bool operator==(const ContentDigest&) const = default;

 private:
  std::uint64_t size_ = 0;
  std::uint64_t hash_ = 14'695'981'039'346'656'037U;  // FNV-1a
};

// Two runs may make a file under the same name, one after the other or at once. What a run hands on or
// deletes as its own must be what it made itself. Safe to use from several threads.
class CreatedFiles {
 public:
  // Notes that the run has made the file at the operating system's path `path`. Files that were noted long
  // ago and never forgotten are forgotten in the end.
  void Add(const std::string& path, const struct stat& status, const ContentDigest& content);
  void Forget(const std::string& path);

  // Whether the run made a file there with this content. The content decides, not the file: the bytes that
  // are about to be handed on are the ones that were compared.
  bool Made(const std::string& path, const ContentDigest& content) const;
  // Whether the run made a file there, and another file than that one lies there now.
  bool WasReplaced(const std::string& path, const struct stat& now) const;

 private:
  struct Record {
    FileStamp stamp;
    ContentDigest content;
  };

  mutable std::mutex mutex_;
  std::map<std::string, Record, std::less<>> records_;
  std::deque<std::string> order_;  // of the records, oldest first; may hold forgotten ones
};

}  // namespace base
