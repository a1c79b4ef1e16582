#include "suite/membership/distinguished_name.hpp"

#include <cstddef>

namespace VnMembership {
namespace {

bool IsSeparator(char c) {
  return c == ',' || c == '=';
}

}  // namespace

std::string NormalName(std::string_view dn) {
  std::string name;
  std::size_t blanks = 0;  // seen, and not known yet to stand inside a value
  for (std::size_t i = 0; i < dn.size(); ++i) {
    const char c = dn[i];
    if (c == ' ') {
      ++blanks;
      continue;
    }
    const bool afterSeparator =
        name.empty() || (IsSeparator(name.back()) && (name.size() < 2 || name[name.size() - 2] != '\\'));
    if (!IsSeparator(c) && !afterSeparator) name.append(blanks, ' ');
    blanks = 0;
    if (c == '\\' && i + 1 < dn.size()) {
      name += c;
      name += dn[++i];
      continue;
    }
    name += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  }
  return name;
}

bool LiesBelow(std::string_view dn, std::string_view root) {
  const std::string name = NormalName(dn);
  const std::string top = NormalName(root);
  if (top.empty() || name == top) return true;
  if (name.size() <= top.size() + 1) return false;
  const std::size_t start = name.size() - top.size();
  return name.compare(start, top.size(), top) == 0 && name[start - 1] == ',';
}

}  // namespace VnMembership
