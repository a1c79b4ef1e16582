#include "platform/scripting/path_text.hpp"

#include <algorithm>
#include <cstddef>

#include "platform/automation/error.hpp"
#include "platform/automation/runtime.hpp"

namespace Scripting {

char DriveLetter(std::string_view path) {
  if (path.size() < 2 || path[1] != ':') return 0;
  const char letter = base::AsciiUpper(path[0]);
  return letter >= 'A' && letter <= 'Z' ? letter : '\0';
}

std::string ParentFolderName(std::string_view path) {
  const std::size_t drive = DriveLetter(path) != 0 ? 2 : 0;
  // The root's separators belong to the root; "/x" and "C:\x" have the parents "/" and "C:\".
  std::size_t root = drive;
  while (root < path.size() && IsSeparator(path[root])) ++root;
  std::size_t end = path.size();
  while (end > root && IsSeparator(path[end - 1])) --end;
  if (end == root) return {};
  while (end > root && !IsSeparator(path[end - 1])) --end;
  while (end > root && IsSeparator(path[end - 1])) --end;
  return std::string(path.substr(0, end));
}

std::string FoldedName(std::string_view name) {
  const bool ascii = std::all_of(name.begin(), name.end(), [](char c) { return c >= 0; });
  return ascii ? base::ToAsciiLower(name) : automation::CurrentLocale().ToLower(name);
}

void RefuseControls(std::string_view path) {
  throw automation::ErrorAbout(automation::ErrorNumber::BadFileName, "Scripting.FileSystemObject",
                               base::WithControlsShown(path));
}

}  // namespace Scripting
