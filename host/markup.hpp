// Text inside XML and HTML.
#pragma once

#include <string>
#include <string_view>

namespace orvane::host {

// With references for the characters that mean something in markup.
std::string MarkupText(std::string_view text);

}  // namespace orvane::host
