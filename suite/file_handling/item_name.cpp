#include "suite/file_handling/item_name.hpp"

#include <algorithm>

namespace OrvCommonMTS {
namespace {

bool IsLetter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool IsControl(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte < 0x20 || byte == 0x7F;
}

std::string Escaped(char c) {
  constexpr char kHex[] = "0123456789ABCDEF";
  const auto byte = static_cast<unsigned char>(c);
  return std::string("\\x") + kHex[byte >> 4] + kHex[byte & 15];
}

}  // namespace

std::string Shown(std::string_view text) {
  std::string shown;
  for (const char c : text) shown += IsControl(c) ? Escaped(c) : std::string(1, c);
  return shown;
}

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
  if (std::any_of(name.begin(), name.end(), IsControl)) return "it holds a control character";
  if (name.size() >= 2 && IsLetter(name[0]) && name[1] == ':') return "it begins with a drive";
  if (name.front() == '\\' || name.front() == '/') return "it is an absolute path";
  const std::vector<std::string> found = NameParts(name);
  for (const std::string& part : found) {
    if (part.empty()) return "it has an empty part";
    // Some servers drop dots and blanks at the end of a name: ".. " would become "..".
    if (part.find_first_not_of(". ") == std::string::npos) return "it would leave its folder";
  }
  if (found.size() != parts) return "it has " + std::to_string(found.size()) + " parts";
  return std::nullopt;
}

std::optional<std::string> PathProblem(std::string_view path) {
  const auto* control = std::find_if(path.begin(), path.end(), IsControl);
  if (control == path.end()) return std::nullopt;
  return "it holds the control character " + Escaped(*control);
}

std::optional<std::string> RootProblem(std::string_view path) {
  if (std::optional<std::string> problem = PathProblem(path)) return problem;
  const std::vector<std::string> parts = NameParts(path);
  if (std::find(parts.begin(), parts.end(), "..") == parts.end()) return std::nullopt;
  return "it has a part \"..\"";
}

}  // namespace OrvCommonMTS
