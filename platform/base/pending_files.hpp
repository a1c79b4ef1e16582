// New files that wait for their names until somebody relies on them.
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>

#include "platform/base/content_digest.hpp"
#include "platform/base/file_replacement.hpp"

namespace base {

// An archive file is made, completed and written again before the first row is deleted on the strength of it.
// Only the last of these states has to survive a power cut, so what is written is kept beside the name until
// then and costs no sync. A program that is killed before leaves nothing under the name.
// Safe to use from several threads.
class PendingFiles {
 public:
  PendingFiles() = default;
  // Publishes what is left. No row was deleted on the strength of it, so a failure loses nothing.
  ~PendingFiles();
  PendingFiles(const PendingFiles&) = delete;
  PendingFiles& operator=(const PendingFiles&) = delete;

  // Takes a whole file that lacks nothing but Commit, in place of one that was kept for the same target.
  // FAILS: as FileReplacement::RequireFreeName, so that most failures are heard where the file is made.
  void Keep(std::unique_ptr<FileReplacement> file);
  bool Holds(const std::string& target) const;
  // Of the file that is kept for `target`; nothing when there is none or it cannot be read.
  std::optional<std::string> Content(const std::string& target) const;
  std::optional<ContentDigest::Value> DigestOf(const std::string& target) const;
  // Lets the file go.
  void Drop(const std::string& target);

  // Gives every file its name, its content synced before, and tells whether there was any. To be called
  // before anybody looks for a file. FAILS: as FileReplacement::Commit, after all files have been tried. A
  // file that failed is not tried again, and every further call fails for it, until it is replaced or
  // dropped: nobody can rely on it unawares.
  bool Publish();

  // A file in this folder has got its name, which is not synced yet.
  void NoteName(const std::string& folder);
  // Publish, and every name that it or somebody else has given is on the disk afterwards. To be called before
  // anything becomes permanent that relies on the files.
  // FAILS: as Publish, and with what syncing a folder fails with.
  void MakeDurable();

 private:
  struct Kept {
    std::unique_ptr<FileReplacement> file;
    int failure = 0;  // the errno value of an attempt to publish it
  };

  bool PublishAll();  // with the mutex held

  mutable std::mutex mutex_;
  std::map<std::string, Kept> files_;  // by their targets
  std::set<std::string> folders_;
};

}  // namespace base
