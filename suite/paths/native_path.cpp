#include "suite/paths/native_path.hpp"

#include <sys/stat.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <system_error>

#include "platform/base/text.hpp"

namespace suite {
namespace {

namespace fs = std::filesystem;

// `folder` / `name`, or the entry of the folder that is meant by it.
fs::path Entry(const fs::path& folder, const std::string& name) {
  fs::path exact = folder / name;
  std::error_code failed;
  if (fs::exists(fs::symlink_status(exact, failed))) return exact;

  std::string found;
  for (fs::directory_iterator entry(folder, failed), end; !failed && entry != end; entry.increment(failed)) {
    const std::string candidate = entry->path().filename().string();
    if (base::EqualsIgnoringAsciiCase(candidate, name) && (found.empty() || candidate < found))
      found = candidate;
  }
  return found.empty() ? exact : folder / found;
}

bool IsThere(const std::string& path) {
  struct stat status {};
  return lstat(path.c_str(), &status) == 0;
}

}  // namespace

std::string SpelledPath(std::string_view path, std::string_view base) {
  std::string text;
  text.reserve(base.size() + 1 + path.size());
  const bool absolute = !path.empty() && (path.front() == '/' || path.front() == '\\');
  if (!absolute && !base.empty()) {
    text = base;
    if (text.back() != '/') text += '/';
  }
  const auto baseSize = static_cast<std::ptrdiff_t>(text.size());
  text += path;
  std::replace(text.begin() + baseSize, text.end(), '\\', '/');
  const auto bothSeparate = [](char left, char right) { return left == '/' && right == '/'; };
  text.erase(std::unique(text.begin() + std::max<std::ptrdiff_t>(baseSize - 1, 0), text.end(), bothSeparate),
             text.end());
  if (text.size() > 1 && text.back() == '/') text.pop_back();
  return text;
}

fs::path NativePath(std::string_view path, const fs::path& base) {
  const std::string text = SpelledPath(path, base.native());
  // Nearly always the path exists as it is spelled, and one call finds out.
  if (IsThere(text)) return text;

  const fs::path whole = text;
  fs::path result = whole.root_path();
  for (const fs::path& part : whole.relative_path()) {
    if (part.empty()) continue;
    result = part == "." || part == ".." ? result / part : Entry(result, part.string());
  }
  return result;
}

}  // namespace suite
