// Paths as text: what every file-system object says about a path without asking a disk.
#pragma once

#include <string>
#include <string_view>

#include "platform/base/text.hpp"

namespace Scripting {

using base::WithControlsShown;

constexpr bool IsSeparator(char c) {
  return c == '\\' || c == '/';
}

// The letter of the drive that the path begins with ("C:..."), in upper case; 0 when it begins with none.
char DriveLetter(std::string_view path);

// The path without its last part and the separators before it; a root ("\", "C:\") is kept. Empty for a
// drive, a root or a bare name. Separators at the end of the path do not count.
std::string ParentFolderName(std::string_view path);

// The form in which names are compared without regard to case: lower case by the current locale's Unicode
// rules. A name of ASCII characters needs no locale.
std::string FoldedName(std::string_view name);

// Raises 52 with the path. An item whose name holds a control character may exist, and is worked on under its
// name; none is made, or searched for without regard to case.
[[noreturn]] void RefuseControls(std::string_view path);

}  // namespace Scripting
