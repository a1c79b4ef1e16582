#include "platform/scripting/path_text.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "platform/automation/error.hpp"
#include "platform/automation/runtime.hpp"

namespace Scripting {
namespace {

bool IsControl(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte < 0x20 || byte == 0x7F;
}

}  // namespace

char DriveLetter(std::string_view path) {
  if (path.size() < 2 || path[1] != ':') return 0;
  const char c = path[0];
  if (c >= 'A' && c <= 'Z') return c;
  if (c >= 'a' && c <= 'z') return static_cast<char>(c - 'a' + 'A');
  return 0;
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
  std::string folded(name);
  for (char& c : folded) {
    if (static_cast<unsigned char>(c) >= 0x80) return automation::CurrentLocale().ToLower(name);
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return folded;
}

bool HoldsControl(std::string_view name) {
  return std::any_of(name.begin(), name.end(), IsControl);
}

std::string WithControlsShown(std::string_view text) {
  constexpr char kHex[] = "0123456789ABCDEF";
  std::string shown;
  for (const char c : text) {
    if (!IsControl(c)) {
      shown += c;
      continue;
    }
    const auto byte = static_cast<unsigned char>(c);
    shown += "\\x";
    shown += kHex[byte >> 4];
    shown += kHex[byte & 15];
  }
  return shown;
}

void RefuseControls(std::string_view path) {
  const auto number = static_cast<std::int32_t>(automation::ErrorNumber::BadFileName);
  throw automation::Error(
      number, "Scripting.FileSystemObject",
      std::string(automation::StandardDescription(number)) + ": " + WithControlsShown(path));
}

}  // namespace Scripting
