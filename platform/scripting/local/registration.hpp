// Puts the scripting run-time of a real machine into a class table.
#pragma once

#include <map>
#include <string>

#include "platform/automation/class_table.hpp"

namespace Scripting::local {

// "Scripting.FileSystemObject" and "Scripting.Dictionary". `drives` maps drive letters to absolute folders.
void RegisterClasses(automation::ClassTable& classes, const std::map<char, std::string>& drives = {});

}  // namespace Scripting::local
