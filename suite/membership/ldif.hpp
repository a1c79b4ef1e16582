// Reads LDIF (RFC 2849): the content records of a directory as text.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "suite/membership/entry.hpp"

namespace VnMembership {

// Every entry of the text: comments, continued lines and base64 values are understood. A value from a URL
// (":<"), a change record and a line that is neither raise kDirectoryUnavailable with `name`, the line and
// what was expected.
std::vector<Entry> ParseLdif(std::string_view text, const std::string& name);

}  // namespace VnMembership
