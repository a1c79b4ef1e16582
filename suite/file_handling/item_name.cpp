#include "suite/file_handling/item_name.hpp"

#include <algorithm>

#include "platform/base/text.hpp"

namespace OrvCommonMTS {
namespace {

bool IsLetter(char c) {
  return base::AsciiLower(c) >= 'a' && base::AsciiLower(c) <= 'z';
}

}  // namespace

std::vector<std::string> NameParts(std::string_view name) {
  std::vector<std::string> parts(1);
  for (const char c : name) {
    if (c == '\\' || c == '/') {
      parts.emplace_back();
    } else {
      parts.back() += c;
    }
  }
  return parts;
}

std::optional<std::string> NameProblem(std::string_view name, std::size_t parts) {
  if (name.empty()) return "it is empty";
  if (base::HasControl(name)) return "it holds a control character";
  if (name.size() >= 2 && IsLetter(name[0]) && name[1] == ':') return "it begins with a drive";
  if (name.front() == '\\' || name.front() == '/') return "it is an absolute path";
  const std::vector<std::string> found = NameParts(name);
  for (const std::string& part : found) {
    if (part.empty()) return "it has an empty part";
    // Some servers drop dots and spaces at the end of a name: ".. " would become "..".
    if (part.find_first_not_of(". ") == std::string::npos) return "it would leave its folder";
  }
  if (found.size() != parts) return "it has " + std::to_string(found.size()) + " parts";
  return std::nullopt;
}

std::optional<std::string> PathProblem(std::string_view path) {
  const auto* control = std::find_if(path.begin(), path.end(), base::IsControl);
  if (control == path.end()) return std::nullopt;
  return "it holds the control character " + base::WithControlsShown({control, 1});
}

std::optional<std::string> RootProblem(std::string_view path) {
  if (std::optional<std::string> problem = PathProblem(path)) return problem;
  const std::vector<std::string> parts = NameParts(path);
  if (std::find(parts.begin(), parts.end(), "..") == parts.end()) return std::nullopt;
  return "it has a part \"..\"";
}

}  // namespace OrvCommonMTS
