#include "suite/paths/native_path.hpp"

#include <sys/stat.h>

#include <algorithm>
#include <string>
#include <system_error>
#include <utility>

namespace suite {
namespace {

namespace fs = std::filesystem;

char Folded(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool EqualButForCase(const std::string& left, const std::string& right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](char a, char b) { return Folded(a) == Folded(b); });
}

// `folder` / `name`, or the entry of the folder that is meant by it.
fs::path Entry(const fs::path& folder, const std::string& name) {
  fs::path exact = folder / name;
  std::error_code failed;
  if (fs::exists(fs::symlink_status(exact, failed))) return exact;

  std::string found;
  for (fs::directory_iterator entry(folder, failed), end; !failed && entry != end; entry.increment(failed)) {
    const std::string candidate = entry->path().filename().string();
    if (EqualButForCase(candidate, name) && (found.empty() || candidate < found)) found = candidate;
  }
  return found.empty() ? exact : folder / found;
}

// Nearly always every part is there letter for letter, and one look at the whole tells so. `exact` is then
// the path without superfluous separators.
bool IsThereAsSpelled(const fs::path& whole, fs::path& exact) {
  std::string text;
  for (const char c : whole.native()) {
    if (c != '/' || text.empty() || text.back() != '/') text += c;
  }
  if (text.size() > 1 && text.back() == '/') text.pop_back();
  struct stat status {};
  if (lstat(text.c_str(), &status) != 0) return false;
  exact = std::move(text);
  return true;
}

}  // namespace

fs::path NativePath(std::string_view path, const fs::path& base) {
  std::string text(path);
  std::replace(text.begin(), text.end(), '\\', '/');
  const fs::path whole = fs::path(text).is_absolute() ? fs::path(text) : base / text;
  if (fs::path exact; IsThereAsSpelled(whole, exact)) return exact;

  fs::path result = whole.root_path();
  for (const fs::path& part : whole.relative_path()) {
    if (part.empty()) continue;  // a trailing separator
    result = part == "." || part == ".." ? result / part : Entry(result, part.string());
  }
  return result;
}

}  // namespace suite
