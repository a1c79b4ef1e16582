#include "platform/msxml2/libxml/messages.hpp"

#include <cstdarg>
#include <cstdio>

#include "platform/base/text.hpp"

namespace MSXML2::libxml {

void CollectMessage(void* text, const char* format, ...) {
  constexpr std::size_t kEnough = 4096;
  char buffer[2048];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(buffer, sizeof buffer, format, arguments);
  va_end(arguments);
  auto& collected = *static_cast<std::string*>(text);
  if (collected.size() < kEnough) collected += buffer;
}

void IgnoreMessage(void*, const char*, ...) {}

std::string Collected(const std::string& text, const char* otherwise) {
  const std::size_t end = text.find_last_not_of('\n') + 1;
  return end == 0 ? otherwise : text.substr(0, end);
}

}  // namespace MSXML2::libxml
