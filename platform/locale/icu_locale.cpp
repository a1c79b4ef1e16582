#include "platform/locale/icu_locale.hpp"

#include <unicode/locid.h>
#include <unicode/unistr.h>

#include <cstdlib>
#include <cstring>
#include <string_view>

#include "platform/locale/code_page.hpp"
#include "platform/locale/date_texts.hpp"
#include "platform/locale/short_date.hpp"

namespace automation {
namespace {

bool IsKnownLanguage(const icu::Locale& locale) {
  int32_t count = 0;
  const icu::Locale* available = icu::Locale::getAvailableLocales(count);
  for (int32_t i = 0; i < count; ++i) {
    if (std::strcmp(available[i].getLanguage(), locale.getLanguage()) == 0) return true;
  }
  return false;
}

ShortDateForm FormOf(std::string name) {
  // "de_DE.UTF-8@euro": the character set says nothing about dates.
  if (const std::size_t dot = name.find('.'); dot != std::string::npos) {
    const std::size_t modifier = name.find('@', dot);
    name.erase(dot, modifier == std::string::npos ? std::string::npos : modifier - dot);
  }
  if (name.empty() || name == "C" || name == "POSIX") return {};
  const icu::Locale locale = icu::Locale::createCanonical(name.c_str());
  if (locale.isBogus() || !IsKnownLanguage(locale)) return {};
  return ShortDateFormOf(ShortDatePattern(locale.getName()));
}

class IcuLocale : public Locale {
 public:
  explicit IcuLocale(const LocaleSettings& settings)
      : shortDate_(FormOf(settings.name)), codePage_(settings.codePage) {}

  std::string DateSeparator() const override { return shortDate_.separator; }

  std::string ShortDate(DateTime value) const override { return FormatShortDate(shortDate_, value); }

  std::string GeneralDate(DateTime value) const override {
    std::string text = ShortDate(value);
    const DateTimeParts parts = value.Parts();
    if (parts.hour == 0 && parts.minute == 0 && parts.second == 0) return text;
    char separator = ' ';
    for (const int part : {parts.hour, parts.minute, parts.second}) {
      text += separator;
      AppendNumber(text, part, 2);
      separator = ':';
    }
    return text;
  }

  DateTime ParseDateTime(std::string_view text) const override {
    return automation::ParseDateTime(shortDate_, text);
  }

  std::string DateText(DateTime value, int style, std::int32_t localeId) const override {
    return dateTexts_.Text(value, style, localeId);
  }

  std::string ToCodePage(std::string_view utf8) const override { return codePage_.FromUtf8(utf8); }
  std::string FromCodePage(std::string_view bytes) const override { return codePage_.ToUtf8(bytes); }

  std::string ToLower(std::string_view utf8) const override {
    std::string lower;
    Utf16(utf8).toLower(icu::Locale::getRoot()).toUTF8String(lower);
    return lower;
  }

  std::string ToUpper(std::string_view utf8) const override {
    std::string upper;
    Utf16(utf8).toUpper(icu::Locale::getRoot()).toUTF8String(upper);
    return upper;
  }

 private:
  static icu::UnicodeString Utf16(std::string_view utf8) {
    return icu::UnicodeString::fromUTF8(icu::StringPiece(utf8.data(), static_cast<int32_t>(utf8.size())));
  }

  ShortDateForm shortDate_;
  CodePage codePage_;
  DateTexts dateTexts_;
};

}  // namespace

std::shared_ptr<const Locale> MakeLocale(const LocaleSettings& settings) {
  return std::make_shared<IcuLocale>(settings);
}

std::string LocaleNameFromEnvironment() {
  for (const char* variable : {"LC_ALL", "LC_TIME", "LANG"}) {
    const char* value = std::getenv(variable);
    if (value != nullptr && *value != '\0') return value;
  }
  return {};
}

}  // namespace automation
