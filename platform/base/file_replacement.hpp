// Writing a file so that its readers see either the old content or the whole new one, whatever happens
// meanwhile.
#pragma once

#include <sys/stat.h>

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "platform/base/descriptor.hpp"

namespace base {

// Of more links than these that lead to each other the system says ELOOP.
inline constexpr int kMostLinks = 40;

// The new content is written to a file beside the target, which takes the target's name in Commit. Without
// Commit, and after every failure, the target is as it was and the file beside it is gone. Failures raise
// std::system_error. The file beside is locked (flock) while its writer lives: two writers of one target
// never share one, and what a killed writer left is removed by the next.
class FileReplacement {
 public:
  // How much of a committed file survives a power cut.
  enum class Durability {
    Content,         // the whole file or none
    ContentAndName,  // the file
  };

  // `target` is the operating system's path, `existing` what lies there now (a link not followed); nothing
  // when there is no such file. A link is followed to the file that it names, which need not exist. The new
  // file keeps the mode of an existing one and, where the system allows it, its owner; one without a
  // predecessor has 0640 less the umask.
  // FAILS: EACCES for a target that may not be written or is no regular file, EISDIR for a folder,
  // ENAMETOOLONG, and whatever making the file beside it fails with.
  FileReplacement(std::string target, std::optional<struct stat> existing);
  // For whatever lies at `target` now.
  explicit FileReplacement(const std::string& target);
  ~FileReplacement();
  FileReplacement(const FileReplacement&) = delete;
  FileReplacement& operator=(const FileReplacement&) = delete;

  const std::string& Target() const { return target_; }  // a link to it followed
  const std::string& Folder() const { return folder_; }  // that of the target, with the separator behind it

  void Write(std::string_view data);
  // What was written can be read from this descriptor until Commit.
  int Content() const { return descriptor_.Get(); }
  struct stat Status() const;  // of the new file, before Commit
  // For a file without a predecessor: whether Commit could give it its name by now. What it answers may
  // change. FAILS: EEXIST and ENOENT, as Commit.
  void RequireFreeName() const;
  // Answers the status of the file under its name.
  // FAILS: EEXIST when there was no file and somebody has made one meanwhile, which stays.
  struct stat Commit(Durability durability);

  // Commit for a file that others change as well. `isExpected` reads the file from a descriptor and says
  // whether it is the one that may be replaced; answer and renaming are one step to every writer that
  // commits in this way, by a lock (flock) on the file. Where files cannot be locked the two are only close
  // together.
  // FAILS: ESTALE when the file is gone or not the expected one, EBUSY when somebody holds the lock for
  // longer than `patience`.
  void CommitOver(const std::function<bool(int descriptor)>& isExpected, Durability durability,
                  std::chrono::milliseconds patience = std::chrono::seconds(10));

 private:
  Descriptor LockTarget(std::chrono::milliseconds patience) const;
  struct stat Finish(Durability durability);  // of the new file

  std::string target_;
  std::string folder_;
  bool replaces_ = false;
  std::string beside_;
  Descriptor descriptor_;
};

// Removes what killed writers of any file in the folder left beside it. Failures are passed over: the next
// call meets the same files.
void RemoveLeftovers(const std::string& folder);
// The same for the files ".NAME<ending>" that a former version of a program left; its writers held no lock,
// so only files that nobody has written to for a day are taken.
void RemoveFormerLeftovers(const std::string& folder, std::string_view ending);

// Renames `from` to `to`, which must not exist: EEXIST otherwise. Answers 0 or an errno value.
int RenameToFreeName(const std::string& from, const std::string& to);

// Puts the names in a folder on the disk. Answers 0 or an errno value; file systems that cannot sync a folder
// have nothing to lose by it and answer 0.
int SyncFolder(const std::string& folder);

}  // namespace base
