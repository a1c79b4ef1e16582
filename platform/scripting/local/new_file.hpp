// A text file that appears under its name when it is closed.
#pragma once

#include <sys/stat.h>

#include <memory>
#include <optional>
#include <string>

#include "platform/base/created_files.hpp"
#include "platform/base/pending_files.hpp"
#include "platform/scripting/file_system_object.hpp"

namespace Scripting::local {

// For FileSystemObject::CreateTextFile: `native` is the operating system's path, `existing` what lies there
// now (a link not followed). A failed write ends the stream. The finished file is noted in `created`, and one
// without a predecessor waits in `pending` for its name, where they are given.
TextStreamPtr OpenNewFile(const std::string& native, const std::optional<struct stat>& existing,
                          std::shared_ptr<base::CreatedFiles> created,
                          std::shared_ptr<base::PendingFiles> pending = nullptr);

}  // namespace Scripting::local
