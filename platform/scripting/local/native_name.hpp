// File names as the disk holds them (any bytes but "/" and NUL) and as job code sees them (UTF-8 without
// "\").
//
// A byte that job code could not hold, or would take for a separator, stands as a character of the private
// use area: "\" as U+F05C, a byte that is no part of valid UTF-8 as U+F080 to U+F0FF. The two directions are
// inverse, so a name taken from a listing always leads back to the very file it came from and never to
// another one.
#pragma once

#include <string>
#include <string_view>

namespace Scripting::local {

std::string ShownName(std::string_view native);

// Also takes whole paths: only the stand-in characters change.
std::string NativeName(std::string_view shown);

}  // namespace Scripting::local
