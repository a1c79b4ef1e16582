// Comparison of distinguished names.
#pragma once

#include <string>
#include <string_view>

namespace VnMembership {

// One spelling for all spellings of a name: ASCII letters in lower case, no spaces around separators, one way
// to escape. A "," in it always separates two parts. A text that is no name is only lowered and trimmed.
std::string NormalName(std::string_view dn);

// Whether the name is `root` or lies below it; every name lies below an empty root.
bool LiesBelow(std::string_view dn, std::string_view root);

}  // namespace VnMembership
