#include "demo/history_text.hpp"

#include "platform/automation/iso_text.hpp"

namespace demo {
namespace {

std::string Entry(std::string_view mark, automation::DateTime time, std::string_view text) {
  return std::string(mark) + " " + automation::IsoText(time.WithoutFraction()) + ".000" + std::string(text);
}

}  // namespace

std::string Post(automation::DateTime time, std::string_view text) {
  return Entry("\x01\x02\x03\x04", time, text);
}

std::string Answer(automation::DateTime time, std::string_view text) {
  return Entry("\x04\x03\x02\x01", time, text);
}

}  // namespace demo
