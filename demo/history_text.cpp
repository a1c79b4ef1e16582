#include "demo/history_text.hpp"

#include <cstdio>

namespace demo {
namespace {

std::string Entry(std::string_view mark, automation::DateTime time, std::string_view text) {
  const automation::DateTimeParts parts = time.Parts();
  char stamp[64];
  std::snprintf(stamp, sizeof stamp, " %04d-%02d-%02d %02d:%02d:%02d.000", parts.year, parts.month, parts.day,
                parts.hour, parts.minute, parts.second);
  return std::string(mark) + stamp + std::string(text);
}

}  // namespace

std::string Post(automation::DateTime time, std::string_view text) {
  return Entry("\x01\x02\x03\x04", time, text);
}

std::string Answer(automation::DateTime time, std::string_view text) {
  return Entry("\x04\x03\x02\x01", time, text);
}

}  // namespace demo
