// Which texts an XML document can hold.
#pragma once

#include <string_view>

namespace MSXML2::libxml {

// Raises, naming the first offender and its place, when `text` is not valid UTF-8 or holds a character
// outside XML 1.0: control characters other than tab, line feed and carriage return, surrogates, U+FFFE and
// U+FFFF. Such a text could be written but never be read again. The answer is whether it holds a character
// that markup may have to replace.
bool RequireXmlText(std::string_view text, const char* source);

// The same for a name of an element or attribute: an XML name, with or without a prefix.
void RequireXmlName(std::string_view name);

}  // namespace MSXML2::libxml
