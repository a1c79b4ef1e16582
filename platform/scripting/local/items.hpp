// Files and folders of the POSIX file tree.
#pragma once

#include <string>

#include "platform/scripting/file_system_object.hpp"
#include "platform/scripting/local/path_resolver.hpp"
#include "platform/scripting/local/tree_status.hpp"

namespace Scripting::local {

// Whether the item is a file to job code: a regular file, or a link that leads to no folder (one that leads
// nowhere included, so that a sweep can remove it). Pipes, sockets and devices are neither files nor folders.
bool IsFile(const Found& item, const LayerPtr& layer);

// Whether the item is a folder or a link to one.
bool IsFolder(const Found& item, const LayerPtr& layer);

// Refused because its owner may not write it.
bool IsReadOnly(const struct stat& status);

// `shown` is the item's path as job code writes it.
FilePtr MakeFile(const std::string& native, const std::string& shown, LayerPtr layer);
FolderPtr MakeFolder(std::string native, std::string shown, LayerPtr layer);

}  // namespace Scripting::local
