// Distinguished names as directories compare them.
#pragma once

#include <string>
#include <string_view>

namespace VnMembership {

// The name in lower case (ASCII letters) without the blanks around its commas and equals signs; an escaped
// comma
// ("\,") stays part of its value.
std::string NormalName(std::string_view dn);

// Whether the name is `root` or lies below it; every name lies below an empty root.
bool LiesBelow(std::string_view dn, std::string_view root);

}  // namespace VnMembership
