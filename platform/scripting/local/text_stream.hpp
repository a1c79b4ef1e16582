// Text files in the single-byte code page, on a file descriptor.
#pragma once

#include <string>

#include "platform/scripting/file_system_object.hpp"

namespace Scripting::local {

// Opens the file at the operating system's path `native`. `flags` are open(2)'s beyond the access mode, which
// follows from `mode`. Raises as FileSystemObject says.
TextStreamPtr OpenStream(const std::string& native, IOMode mode, int flags);

}  // namespace Scripting::local
