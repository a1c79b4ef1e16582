// Which release of the program this is.
#pragma once

#include <string_view>

namespace orvane {

std::string_view Version();  // "1.2.3"

}  // namespace orvane
