// A text file that appears under its name when it is closed.
#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>

#include "platform/scripting/file_system_object.hpp"

namespace Scripting::local {

// For FileSystemObject::CreateTextFile: `native` is the operating system's path, `existing` what lies there
// now (a link not followed). A failed write ends the stream.
TextStreamPtr OpenNewFile(const std::string& native, const std::optional<struct stat>& existing);

}  // namespace Scripting::local
