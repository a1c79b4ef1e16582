#include "platform/automation/iso_text.hpp"

namespace automation {
namespace {

void AppendDigits(std::string& text, int value, int digits) {
  const std::size_t end = text.size() + static_cast<std::size_t>(digits);
  text.resize(end);
  for (std::size_t i = end; digits > 0; --digits, value /= 10)
    text[--i] = static_cast<char>('0' + value % 10);
}

}  // namespace

std::string IsoText(DateTime value) {
  const DateTimeParts parts = value.Parts();
  std::string text;
  text.reserve(26);
  AppendDigits(text, parts.year, 4);
  text += '-';
  AppendDigits(text, parts.month, 2);
  text += '-';
  AppendDigits(text, parts.day, 2);
  text += ' ';
  AppendDigits(text, parts.hour, 2);
  text += ':';
  AppendDigits(text, parts.minute, 2);
  text += ':';
  AppendDigits(text, parts.second, 2);
  if (parts.microsecond != 0) {
    text += '.';
    AppendDigits(text, parts.microsecond, 6);
    while (text.back() == '0') text.pop_back();
  }
  return text;
}

}  // namespace automation
