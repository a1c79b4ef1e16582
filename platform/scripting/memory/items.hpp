// Files, folders and text streams of a tree in memory.
#pragma once

#include <string>

#include "platform/scripting/file_system_object.hpp"
#include "platform/scripting/memory/memory_disk.hpp"

namespace Scripting::memory {

[[noreturn]] void Raise(automation::ErrorNumber number);

// `shown` is the item's full path.
FilePtr MakeFile(MemoryDiskPtr disk, NodePtr node, std::string shown);
FolderPtr MakeFolder(MemoryDiskPtr disk, NodePtr node, std::string shown);

// Opens an existing file; 70 when it is held, or read-only and to be written. Writing empties it first.
TextStreamPtr OpenStream(MemoryDiskPtr disk, NodePtr node, IOMode mode);

}  // namespace Scripting::memory
