// Files, folders and text streams of a tree in memory.
#pragma once

#include <string>

#include "platform/scripting/file_system_object.hpp"
#include "tests/doubles/memory/memory_disk.hpp"

namespace Scripting::memory {

[[noreturn]] void Raise(automation::ErrorNumber number);

// Raises 76 where there is no folder to hold a new item, 52 for a name that is too long.
void RequirePlace(const MemoryDisk::Position& position);
NodePtr NewItem(const MemoryDisk::Position& position, bool isFolder);

// `shown` is the item's full path.
FilePtr MakeFile(MemoryDiskPtr disk, NodePtr node, std::string shown);
FolderPtr MakeFolder(MemoryDiskPtr disk, NodePtr node, std::string shown);

// For FileSystemObject::CreateTextFile: what is written appears at `path` when the stream is closed.
// `existing` is what lies there now; 70 when it is held, read-only or a folder.
TextStreamPtr OpenNewFile(MemoryDiskPtr disk, std::string path, const NodePtr& existing);

// Opens an existing file; 70 when it is held, or read-only and to be written. Writing empties it first.
TextStreamPtr OpenStream(MemoryDiskPtr disk, NodePtr node, IOMode mode);

}  // namespace Scripting::memory
