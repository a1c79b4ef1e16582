// Which texts and names an XML document can hold.
#pragma once

#include <string>
#include <string_view>

namespace MSXML2::dom {

// Raises, naming the first offender and its place, when `text` is not valid UTF-8 or holds a character
// outside XML 1.0: control characters other than tab, line feed and carriage return, surrogates, U+FFFE and
// U+FFFF. Such a text could be written but never be read again.
void RequireXmlText(std::string_view text, const char* source);

// The same for the name of an element or attribute: an XML name without a prefix.
void RequireXmlName(const std::string& name);

}  // namespace MSXML2::dom
