// Which release of the program this is.
#pragma once

#include <string_view>

namespace orvane_host {

std::string_view Version();  // "1.2.3"

}  // namespace orvane_host
