// Files and folders as the scripting run-time sees them: "Scripting.FileSystemObject".
//
// Paths are written with "\" (a "/" is understood as well). A name is looked up exactly first and, when that
// does not exist, without regard to case. Missing files raise 53, missing folders 76, refused access 70.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/automation/date_time.hpp"
#include "platform/automation/export.hpp"
#include "platform/automation/object.hpp"

namespace Scripting {

inline constexpr std::string_view kFileSystemObjectProgId = "Scripting.FileSystemObject";

enum class IOMode { ForReading = 1, ForWriting = 2, ForAppending = 8 };

// A text file in the single-byte system code page; texts given to it are UTF-8.
class ORVANE_EXPORT TextStream : public automation::Object {
 public:
  virtual void Write(std::string_view text) = 0;
  virtual void WriteLine(std::string_view text) = 0;  // the text and CR LF
  virtual std::string ReadAll() = 0;                  // 62 at the end of the file
  // Everything written has reached the operating system when Close returns; a failed write raises here at the
  // latest. The destructor closes too, but cannot report; a new file (CreateTextFile) it drops.
  virtual void Close() = 0;
};
using TextStreamPtr = std::shared_ptr<TextStream>;

class ORVANE_EXPORT File : public automation::Object {
 public:
  virtual std::string Name() const = 0;
  virtual std::string Path() const = 0;
  virtual std::int64_t Size() const = 0;
  virtual automation::DateTime DateLastAccessed() const = 0;
  virtual TextStreamPtr OpenAsTextStream(IOMode mode) = 0;  // single-byte format
};
using FilePtr = std::shared_ptr<File>;

// The files of a folder at one moment. The object of a file is made each time it is asked for, so that the
// list of a folder with a million files takes the memory of their names.
class FileList {
 public:
  // The file at an index below the list's size.
  using Access = std::function<FilePtr(std::size_t)>;

  FileList() = default;
  FileList(std::size_t size, Access file) : size_(size), file_(std::move(file)) {}

  std::size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  FilePtr operator[](std::size_t index) const { return file_(index); }

  class Iterator {
   public:
    Iterator(const FileList& list, std::size_t index) : list_(&list), index_(index) {}
    FilePtr operator*() const { return (*list_)[index_]; }
    Iterator& operator++() {
      ++index_;
      return *this;
    }
    bool operator!=(const Iterator& other) const { return index_ != other.index_; }

   private:
    const FileList* list_;
    std::size_t index_;
  };
  Iterator begin() const { return {*this, 0}; }
  Iterator end() const { return {*this, size_}; }

 private:
  std::size_t size_ = 0;
  Access file_;
};

class ORVANE_EXPORT Folder : public automation::Object {
 public:
  virtual std::string Name() const = 0;
  virtual std::string Path() const = 0;
  virtual automation::DateTime DateLastAccessed() const = 0;
  // Whether a link stands here and what the folder holds lies elsewhere.
  virtual bool IsLink() const = 0;
  // The direct children at the moment of the call, ordered by name. Links to files count as files, links to
  // folders as folders.
  virtual FileList Files() const = 0;
  virtual std::vector<std::shared_ptr<Folder>> SubFolders() const = 0;
};
using FolderPtr = std::shared_ptr<Folder>;

class ORVANE_EXPORT FileSystemObject : public automation::Object {
 public:
  virtual bool FolderExists(std::string_view path) const = 0;
  virtual bool FileExists(std::string_view path) const = 0;
  // "C", "C:" or a path that begins with a drive; a path from the root of a POSIX file tree is on a drive
  // that exists.
  virtual bool DriveExists(std::string_view drive) const = 0;

  virtual FilePtr GetFile(std::string_view path) const = 0;      // 53
  virtual FolderPtr GetFolder(std::string_view path) const = 0;  // 76

  // One level, on the disk when this returns; 58 when it exists already, 76 when its parent does not.
  virtual FolderPtr CreateFolder(std::string_view path) = 0;
  // A new empty file, open for writing, in the single-byte code page; 58 when it exists and `overwrite` is
  // false. It appears under its name, whole, when it is closed: until then nothing is there, or the file that
  // it overwrites. Close raises 58 when there was none and somebody has made one meanwhile.
  virtual TextStreamPtr CreateTextFile(std::string_view path, bool overwrite) = 0;
  // 53 when it is missing and `create` is false.
  virtual TextStreamPtr OpenTextFile(std::string_view path, IOMode mode, bool create) = 0;

  // Read-only items are refused with 70 unless `force` is true.
  virtual void DeleteFile(std::string_view path, bool force) = 0;
  // With everything inside. A link inside the folder is removed as a link, never followed.
  virtual void DeleteFolder(std::string_view path, bool force) = 0;

  // The path without its last part; empty for a drive or a bare name. Text only: the disk is not asked.
  virtual std::string GetParentFolderName(std::string_view path) const = 0;
};
using FileSystemObjectPtr = std::shared_ptr<FileSystemObject>;

}  // namespace Scripting
