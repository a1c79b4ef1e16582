#include "platform/locale/date_pattern.hpp"

#include <cstddef>
#include <utility>

namespace automation {
namespace {

bool IsLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// Whether a run of this letter is a plain number, or AM and PM.
bool IsPlain(char letter, std::size_t count) {
  switch (letter) {
    case 'y':
      return count != 2;  // two letters are a year of two digits
    case 'M':
    case 'd':
    case 'H':
    case 'h':
    case 'm':
    case 's':
      return count <= 2;
    case 'a':
      return count == 1;
    default:
      return false;
  }
}

int Number(const DateTimeParts& parts, char letter) {
  switch (letter) {
    case 'y':
      return parts.year;
    case 'M':
      return parts.month;
    case 'd':
      return parts.day;
    case 'H':
      return parts.hour;
    case 'h':
      return parts.hour % 12 == 0 ? 12 : parts.hour % 12;
    case 'm':
      return parts.minute;
    default:
      return parts.second;
  }
}

}  // namespace

void AppendNumber(std::string& text, int number, int digits) {
  std::array<char, 12> reversed;
  std::size_t count = 0;
  do {
    reversed[count++] = static_cast<char>('0' + number % 10);
    number /= 10;
  } while (number > 0);
  for (int i = static_cast<int>(count); i < digits; ++i) text += '0';
  while (count > 0) text += reversed[--count];
}

std::optional<DatePattern> DatePattern::Read(std::string_view pattern,
                                             std::array<std::string, 2> halvesOfDay) {
  DatePattern read;
  read.halvesOfDay_ = std::move(halvesOfDay);
  std::string text;
  const auto endText = [&] {
    if (!text.empty()) read.pieces_.push_back({.field = 0, .digits = 0, .text = std::exchange(text, {})});
  };
  bool quoted = false;
  for (std::size_t i = 0; i < pattern.size();) {
    const char c = pattern[i];
    if (c == '\'') {
      const bool pair = i + 1 < pattern.size() && pattern[i + 1] == c;
      if (pair) text += c;
      if (!pair) quoted = !quoted;
      i += pair ? 2 : 1;
      continue;
    }
    if (quoted || !IsLetter(c)) {
      text += c;
      ++i;
      continue;
    }
    std::size_t count = 1;
    while (i + count < pattern.size() && pattern[i + count] == c) ++count;
    if (!IsPlain(c, count)) return std::nullopt;
    endText();
    read.pieces_.push_back({.field = c, .digits = static_cast<int>(count), .text = {}});
    i += count;
  }
  endText();
  return read;
}

std::string DatePattern::Text(const DateTimeParts& parts) const {
  std::string text;
  for (const Piece& piece : pieces_) {
    if (piece.field == 0) {
      text += piece.text;
    } else if (piece.field == 'a') {
      text += halvesOfDay_[parts.hour < 12 ? 0 : 1];
    } else {
      AppendNumber(text, Number(parts, piece.field), piece.digits);
    }
  }
  return text;
}

}  // namespace automation
