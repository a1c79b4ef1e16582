// Puts the scripting run-time of a real machine into a class table.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "platform/automation/class_table.hpp"
#include "platform/base/created_files.hpp"
#include "platform/base/file_layer.hpp"
#include "platform/base/pending_files.hpp"

namespace Scripting::local {

// "Scripting.FileSystemObject" and "Scripting.Dictionary". `drives` maps drive letters to absolute folders.
// All file-system objects of the table note the files that they make in `created`, change the tree in `layer`
// only, and keep new text files in `pending`, if there are these.
void RegisterClasses(automation::ClassTable& classes, const std::map<char, std::string>& drives = {},
                     const std::shared_ptr<base::CreatedFiles>& created = nullptr,
                     const std::shared_ptr<base::FileLayer>& layer = nullptr,
                     const std::shared_ptr<base::PendingFiles>& pending = nullptr);

}  // namespace Scripting::local
