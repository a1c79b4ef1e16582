#include "platform/scripting/local/items.hpp"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <string_view>
#include <utility>

#include "platform/automation/local_time.hpp"
#include "platform/scripting/local/layer_stream.hpp"
#include "platform/scripting/local/native_name.hpp"
#include "platform/scripting/local/system_error.hpp"
#include "platform/scripting/local/text_stream.hpp"
#include "platform/scripting/path_text.hpp"

namespace Scripting::local {
namespace {

using automation::ErrorNumber;

// A dangling link is an item all the same, with a time of its own.
bool IsDangling(int code) {
  return code == ENOENT || code == ENOTDIR || code == ELOOP;
}

struct stat StatusOf(const LayerPtr& layer, const std::string& native, ErrorNumber missing) {
  struct stat status {};
  if (const int failure = Stat(layer, native, status)) RaiseSystemError(failure, missing);
  return status;
}

// What all items of one listing share.
struct FolderPath {
  std::string native;
  std::string shown;
  LayerPtr layer;

  std::string NativeOf(std::string_view name) const { return Joined(native, '/', name); }
  std::string ShownOf(std::string_view name) const { return Joined(shown, '\\', ShownName(name)); }

 private:
  static std::string Joined(const std::string& folder, char separator, std::string_view name) {
    std::string path;
    path.reserve(folder.size() + 1 + name.size());
    path = folder;
    if (path.empty() || path.back() != separator) path += separator;
    path += name;
    return path;
  }
};
using FolderPathPtr = std::shared_ptr<const FolderPath>;

// Names one behind the other: a string of its own for each would take four times the memory.
class NameList {
 public:
  void Add(const char* name) {
    starts_.push_back(text_.size());
    text_.append(name).push_back('\0');
  }
  void Sort() {
    std::sort(starts_.begin(), starts_.end(), [this](std::size_t left, std::size_t right) {
      return std::strcmp(text_.c_str() + left, text_.c_str() + right) < 0;
    });
  }
  std::size_t size() const { return starts_.size(); }
  const char* operator[](std::size_t index) const { return text_.c_str() + starts_[index]; }

 private:
  std::string text_;
  std::vector<std::size_t> starts_;
};

class LocalFile : public File {
 public:
  LocalFile(FolderPathPtr folder, std::string name) : folder_(std::move(folder)), name_(std::move(name)) {}

  std::string Name() const override { return ShownName(name_); }
  std::string Path() const override { return folder_->ShownOf(name_); }
  std::int64_t Size() const override { return Status().st_size; }
  automation::DateTime DateLastAccessed() const override {
    const std::string native = folder_->NativeOf(name_);
    struct stat status {};
    const int code = Stat(folder_->layer, native, status);
    if (code == 0) return automation::LocalTime(status.st_atim);
    if (!IsDangling(code) || Lstat(folder_->layer, native, status) != 0) {
      RaiseSystemError(code, ErrorNumber::FileNotFound);
    }
    return automation::LocalTime(status.st_atim);
  }
  TextStreamPtr OpenAsTextStream(IOMode mode) override {
    if (mode != IOMode::ForReading && IsReadOnly(Status())) Raise(ErrorNumber::PermissionDenied);
    const int flags = mode == IOMode::ForWriting ? O_TRUNC : 0;
    if (folder_->layer) return OpenInLayer(folder_->layer, folder_->NativeOf(name_), mode, flags);
    return OpenStream(folder_->NativeOf(name_), mode, flags);
  }

 private:
  struct stat Status() const {
    return StatusOf(folder_->layer, folder_->NativeOf(name_), ErrorNumber::FileNotFound);
  }

  FolderPathPtr folder_;
  std::string name_;
};

class LocalFolder : public Folder {
 public:
  LocalFolder(std::string native, std::string shown, LayerPtr layer)
      : path_(std::make_shared<const FolderPath>(
            FolderPath{std::move(native), std::move(shown), std::move(layer)})) {}

  std::string Name() const override {
    const std::string& shown = path_->shown;
    const std::size_t start = shown.find_last_of("\\/:");
    return start == std::string::npos ? shown : shown.substr(start + 1);
  }
  std::string Path() const override { return path_->shown; }
  automation::DateTime DateLastAccessed() const override {
    return automation::LocalTime(StatusOf(path_->layer, path_->native, ErrorNumber::PathNotFound).st_atim);
  }
  bool IsLink() const override {
    struct stat itself {};
    if (const int failure = Lstat(path_->layer, path_->native, itself)) {
      RaiseSystemError(failure, ErrorNumber::PathNotFound);
    }
    return S_ISLNK(itself.st_mode);
  }

  FileList Files() const override {
    const auto names = std::make_shared<const NameList>(Names(false));
    return {names->size(), [folder = path_, names](std::size_t index) {
              return std::make_shared<LocalFile>(folder, (*names)[index]);
            }};
  }

  std::vector<FolderPtr> SubFolders() const override {
    std::vector<FolderPtr> folders;
    const NameList names = Names(true);
    for (std::size_t i = 0; i < names.size(); ++i) {
      folders.push_back(
          std::make_shared<LocalFolder>(path_->NativeOf(names[i]), path_->ShownOf(names[i]), path_->layer));
    }
    return folders;
  }

 private:
  NameList Names(bool folders) const {
    NameList names;
    const int failure = ForEachChild(path_->layer, path_->native, [&](const char* name, unsigned char type) {
      if (IsWanted(name, type, folders)) names.Add(name);
    });
    if (failure != 0) RaiseSystemError(failure, ErrorNumber::PathNotFound);
    names.Sort();
    return names;
  }

  bool IsWanted(const char* name, unsigned char type, bool folders) const {
    if (type == DT_REG) return !folders;
    if (type == DT_DIR) return folders;
    if (type != DT_LNK && type != DT_UNKNOWN) return false;
    Found found{path_->NativeOf(name), {}};
    if (Lstat(path_->layer, found.path, found.status) != 0) return false;
    return folders ? IsFolder(found, path_->layer) : IsFile(found, path_->layer);
  }

  FolderPathPtr path_;
};

}  // namespace

bool IsFolder(const Found& item, const LayerPtr& layer) {
  if (S_ISDIR(item.status.st_mode)) return true;
  struct stat target {};
  return S_ISLNK(item.status.st_mode) && Stat(layer, item.path, target) == 0 && S_ISDIR(target.st_mode);
}

bool IsFile(const Found& item, const LayerPtr& layer) {
  return S_ISREG(item.status.st_mode) || (S_ISLNK(item.status.st_mode) && !IsFolder(item, layer));
}

bool IsReadOnly(const struct stat& status) {
  return !S_ISLNK(status.st_mode) && (status.st_mode & S_IWUSR) == 0;
}

FilePtr MakeFile(const std::string& native, const std::string& shown, LayerPtr layer) {
  const std::size_t slash = native.rfind('/');
  const std::string name = slash == std::string::npos ? native : native.substr(slash + 1);
  std::string folder = slash == std::string::npos ? "." : slash == 0 ? "/" : native.substr(0, slash);
  return std::make_shared<LocalFile>(std::make_shared<const FolderPath>(FolderPath{
                                         std::move(folder), ParentFolderName(shown), std::move(layer)}),
                                     name);
}

FolderPtr MakeFolder(std::string native, std::string shown, LayerPtr layer) {
  return std::make_shared<LocalFolder>(std::move(native), std::move(shown), std::move(layer));
}

}  // namespace Scripting::local
