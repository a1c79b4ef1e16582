// Bytes as text that mail and JSON can hold.
#pragma once

#include <string>
#include <string_view>

namespace base {

// Appends the bytes in base64, padded with "=".
void AppendBase64(std::string& text, std::string_view bytes);

}  // namespace base
