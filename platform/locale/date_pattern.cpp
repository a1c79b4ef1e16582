#include "platform/locale/date_pattern.hpp"

#include <unicode/dcfmtsym.h>
#include <unicode/decimfmt.h>

#include <cstdint>
#include <string_view>

#include "platform/locale/short_date.hpp"

namespace automation {
namespace {

bool IsLetter(char16_t c) {
  return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
}

// Whether a field of the pattern shows a number, all of it.
bool IsNumber(char16_t letter, int width) {
  if (letter == u'y') return width != 2;
  return width <= 2 && std::u16string_view(u"MdHhms").find(letter) != std::u16string_view::npos;
}

int NumberOf(char16_t letter, const DateTimeParts& parts) {
  switch (letter) {
    case u'y':
      return parts.year;
    case u'M':
      return parts.month;
    case u'd':
      return parts.day;
    case u'H':
      return parts.hour;
    case u'h':
      return parts.hour % 12 == 0 ? 12 : parts.hour % 12;
    case u'm':
      return parts.minute;
    default:
      return parts.second;
  }
}

// Whether the numbers of a field are written in the digits 0 to 9.
bool HasWesternDigits(const icu::SimpleDateFormat& format, char16_t letter) {
  const auto* decimal = dynamic_cast<const icu::DecimalFormat*>(format.getNumberFormatForField(letter));
  return decimal != nullptr && decimal->getDecimalFormatSymbols()->getConstSymbol(
                                   icu::DecimalFormatSymbols::kZeroDigitSymbol) == icu::UnicodeString(u'0');
}

}  // namespace

std::string PlainUtf8(const icu::UnicodeString& text) {
  icu::UnicodeString plain;
  for (std::int32_t i = 0; i < text.length(); ++i) {
    const char16_t c = text[i];
    if (c == 0x200E || c == 0x200F || c == 0x061C) continue;
    plain.append(c == 0x00A0 || c == 0x202F || c == 0x2009 ? u' ' : c);
  }
  std::string utf8;
  plain.toUTF8String(utf8);
  return utf8;
}

DatePattern::DatePattern(const icu::SimpleDateFormat& format) {
  icu::UnicodeString pattern;
  format.toPattern(pattern);
  icu::UnicodeString words;
  const auto endWords = [&] {
    if (!words.isEmpty()) pieces_.emplace_back().words = PlainUtf8(words);
    words.remove();
  };
  bool quoted = false;
  for (std::int32_t i = 0; i < pattern.length(); ++i) {
    const char16_t c = pattern[i];
    if (c == u'\'') {
      const bool isItself = i + 1 < pattern.length() && pattern[i + 1] == u'\'';
      if (isItself) {
        words.append(pattern[++i]);
      } else {
        quoted = !quoted;
      }
    } else if (quoted || !IsLetter(c)) {
      words.append(c);
    } else {
      endWords();
      // "noon" and "in the afternoon" depend on what else the pattern shows.
      if (c == u'b' || c == u'B') {
        pieces_.clear();
        pieces_.emplace_back().field.reset(format.clone());
        return;
      }
      const std::int32_t begin = i;
      while (i + 1 < pattern.length() && pattern[i + 1] == c) ++i;
      AddField(format, c, i + 1 - begin);
    }
  }
  endWords();
}

void DatePattern::AddField(const icu::SimpleDateFormat& format, char16_t letter, int width) {
  Piece& piece = pieces_.emplace_back();
  if (IsNumber(letter, width) && HasWesternDigits(format, letter)) {
    piece.number = letter;
    piece.width = width;
  } else {
    piece.field.reset(format.clone());
    piece.field->applyPattern(icu::UnicodeString(width, static_cast<UChar32>(letter), width));
  }
}

std::string DatePattern::Text(DateTime value) const {
  const DateTimeParts parts = value.Parts();
  std::string text;
  for (const Piece& piece : pieces_) {
    text += piece.words;
    if (piece.number != 0) AppendNumber(text, NumberOf(piece.number, parts), piece.width);
    if (piece.field) {
      icu::UnicodeString shown;
      const std::int64_t milliseconds = value.WithoutFraction().UnixMicroseconds() / 1000;
      piece.field->format(static_cast<UDate>(milliseconds), shown);
      text += PlainUtf8(shown);
    }
  }
  return text;
}

}  // namespace automation
