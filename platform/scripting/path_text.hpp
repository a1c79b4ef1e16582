// Paths as text: what every file-system object says about a path without asking a disk.
#pragma once

#include <string>
#include <string_view>

namespace Scripting {

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

// Whether the name holds a character of U+0000 to U+001F, or U+007F. An item of such a name may be there, and
// is worked on under it; nothing is made or looked for under such a name.
bool HoldsControl(std::string_view name);

// The text with each control character as "\x0D", for messages.
std::string WithControlsShown(std::string_view text);

// Raises 52 with the path.
[[noreturn]] void RefuseControls(std::string_view path);

}  // namespace Scripting
