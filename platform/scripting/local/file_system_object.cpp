#include "platform/scripting/local/file_system_object.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <utility>

#include "platform/base/file_replacement.hpp"
#include "platform/scripting/local/items.hpp"
#include "platform/scripting/local/layer_stream.hpp"
#include "platform/scripting/local/new_file.hpp"
#include "platform/scripting/local/pending.hpp"
#include "platform/scripting/local/system_error.hpp"
#include "platform/scripting/local/text_stream.hpp"
#include "platform/scripting/local/tree_removal.hpp"
#include "platform/scripting/path_text.hpp"

namespace Scripting::local {
namespace {

using automation::ErrorNumber;

// A path that ends in a separator names a folder, never a file.
bool NamesFolder(std::string_view path) {
  return !path.empty() && IsSeparator(path.back());
}

// Opening follows links, so whether a file may be written is its target's affair.
void RefuseReadOnly(const LayerPtr& layer, const std::string& native) {
  struct stat target {};
  if (Stat(layer, native, target) == 0 && IsReadOnly(target)) Raise(ErrorNumber::PermissionDenied);
}

// A new folder is on the disk only when its entry in the parent is: what is synced inside it later would go
// with it in a power cut. A parent that may not be read cannot be synced.
void SyncParent(const std::string& native) {
  const std::string parent = native.substr(0, native.rfind('/') + 1);
  const int code = base::SyncFolder(parent.empty() ? "." : parent);
  if (code != 0 && code != EACCES && code != EROFS) RaiseSystemError(code, ErrorNumber::PathNotFound);
}

int Unlink(const LayerPtr& layer, const std::string& native) {
  if (layer) return layer->RemoveFile(native);
  return unlink(native.c_str()) == 0 ? 0 : errno;
}

}  // namespace

bool LocalFileSystem::FolderExists(std::string_view path) const {
  try {
    const std::optional<Found> found = path.empty() ? std::nullopt : resolver_.Find(path);
    return found && IsFolder(*found, layer_);
  } catch (const automation::Error&) {
    return false;  // what cannot be looked at does not exist for the asker
  }
}

bool LocalFileSystem::FileExists(std::string_view path) const {
  try {
    const std::optional<Found> found =
        path.empty() || NamesFolder(path) ? std::nullopt : resolver_.Find(path);
    return found && IsFile(*found, layer_);
  } catch (const automation::Error&) {
    return false;
  }
}

bool LocalFileSystem::DriveExists(std::string_view drive) const {
  return resolver_.DriveExists(drive);
}

FilePtr LocalFileSystem::GetFile(std::string_view path) const {
  const std::optional<Found> found = resolver_.Find(path);
  if (!found || NamesFolder(path) || !IsFile(*found, layer_)) Raise(ErrorNumber::FileNotFound);
  return MakeFile(found->path, resolver_.ShownPath(found->path, path), layer_);
}

FolderPtr LocalFileSystem::GetFolder(std::string_view path) const {
  PublishPending(pending_);
  std::optional<Found> found = resolver_.Find(path);
  if (!found || !IsFolder(*found, layer_)) Raise(ErrorNumber::PathNotFound);
  std::string shown = resolver_.ShownPath(found->path, path);
  return MakeFolder(std::move(found->path), std::move(shown), layer_);
}

FolderPtr LocalFileSystem::CreateFolder(std::string_view path) {
  PathResolver::Place place = resolver_.PlaceFor(path);
  if (place.existing) Raise(ErrorNumber::FileAlreadyExists);
  if (layer_) {
    if (const int failure = layer_->MakeFolder(place.path))
      RaiseSystemError(failure, ErrorNumber::PathNotFound);
  } else {
    if (mkdir(place.path.c_str(), 0750) != 0) RaiseSystemError(errno, ErrorNumber::PathNotFound);
    SyncParent(place.path);
  }
  std::string shown = resolver_.ShownPath(place.path, path);
  return MakeFolder(std::move(place.path), std::move(shown), layer_);
}

TextStreamPtr LocalFileSystem::CreateTextFile(std::string_view path, bool overwrite) {
  if (NamesFolder(path)) Raise(ErrorNumber::PathNotFound);
  const PathResolver::Place place = resolver_.PlaceFor(path);
  if (place.existing && !overwrite) Raise(ErrorNumber::FileAlreadyExists);
  if (place.existing) RefuseReadOnly(layer_, place.path);
  if (layer_) return OpenNewInLayer(layer_, place.path, place.existing.has_value(), created_);
  return OpenNewFile(place.path, place.existing, created_, pending_);
}

TextStreamPtr LocalFileSystem::OpenTextFile(std::string_view path, IOMode mode, bool create) {
  if (NamesFolder(path)) Raise(ErrorNumber::PathNotFound);
  const PathResolver::Place place = resolver_.PlaceFor(path);
  if (!place.existing && !create) Raise(ErrorNumber::FileNotFound);
  if (place.existing && mode != IOMode::ForReading) RefuseReadOnly(layer_, place.path);
  int flags = create ? O_CREAT : 0;
  if (mode == IOMode::ForWriting) flags |= O_TRUNC;
  if (layer_) return OpenInLayer(layer_, place.path, mode, flags);
  return OpenStream(place.path, mode, flags);
}

void LocalFileSystem::DeleteFile(std::string_view path, bool force) {
  if (const auto pending = NamesFolder(path) ? std::nullopt : resolver_.FindPending(path)) {
    pending_->Drop(*pending);
    if (created_) created_->Forget(*pending);
    return;
  }
  const std::optional<Found> found = resolver_.Find(path);
  if (!found || NamesFolder(path) || !IsFile(*found, layer_)) Raise(ErrorNumber::FileNotFound);
  if (!force && IsReadOnly(found->status)) Raise(ErrorNumber::PermissionDenied);
  if (created_ && created_->WasReplaced(found->path, found->status)) Raise(ErrorNumber::PermissionDenied);
  resolver_.RemoveAndUpdate(found->path, [&] {
    if (const int failure = Unlink(layer_, found->path)) RaiseSystemError(failure, ErrorNumber::FileNotFound);
  });
  if (created_) created_->Forget(found->path);
}

void LocalFileSystem::DeleteFolder(std::string_view path, bool force) {
  PublishPending(pending_);
  const std::optional<Found> found = resolver_.Find(path);
  if (!found || !IsFolder(*found, layer_)) Raise(ErrorNumber::PathNotFound);
  resolver_.RemoveAndUpdate(found->path, [&] {
    if (S_ISLNK(found->status.st_mode)) {
      if (const int failure = Unlink(layer_, found->path))
        RaiseSystemError(failure, ErrorNumber::PathNotFound);
    } else if (layer_) {
      RemoveTree(*layer_, found->path, force);
    } else {
      RemoveTree(found->path, force);
    }
  });
}

std::string LocalFileSystem::GetParentFolderName(std::string_view path) const {
  return ParentFolderName(path);
}

}  // namespace Scripting::local
