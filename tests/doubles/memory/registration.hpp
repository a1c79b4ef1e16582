// Puts the scripting run-time on a tree in memory into a class table.
#pragma once

#include "platform/automation/class_table.hpp"
#include "tests/doubles/memory/memory_disk.hpp"

namespace Scripting::memory {

// "Scripting.FileSystemObject", every object of which works on `disk`, and "Scripting.Dictionary".
void RegisterClasses(automation::ClassTable& classes, const MemoryDiskPtr& disk);

}  // namespace Scripting::memory
