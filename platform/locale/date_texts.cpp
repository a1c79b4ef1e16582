#include "platform/locale/date_texts.hpp"

#include <unicode/calendar.h>
#include <unicode/datefmt.h>
#include <unicode/gregocal.h>
#include <unicode/locid.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>
#include <unicode/uloc.h>
#include <unicode/unistr.h>

#include <map>
#include <mutex>
#include <utility>

#include "platform/automation/error.hpp"
#include "platform/locale/date_pattern.hpp"

namespace automation {
namespace {

constexpr int kLong = 2;
constexpr int kShortWithTime = 3;
constexpr std::int32_t kFallbackLocaleId = 1033;

[[noreturn]] void RaiseInternal(const char* what) {
  throw Error(ErrorNumber::InternalError, "Locale", what);
}

std::unique_ptr<icu::SimpleDateFormat> Take(icu::DateFormat* made) {
  const std::unique_ptr<icu::DateFormat> format(made);
  const auto* simple = dynamic_cast<const icu::SimpleDateFormat*>(format.get());
  if (simple == nullptr) RaiseInternal("no date format for the locale");
  return std::unique_ptr<icu::SimpleDateFormat>(simple->clone());
}

// Date-times carry no zone and the Gregorian calendar has no beginning, for the formatter as well.
void UsePlainCalendar(icu::SimpleDateFormat& format, const icu::Locale& locale) {
  UErrorCode status = U_ZERO_ERROR;
  auto calendar = std::make_unique<icu::GregorianCalendar>(icu::TimeZone::getGMT()->clone(), locale, status);
  if (U_SUCCESS(status)) calendar->setGregorianChange(-1e16, status);
  if (U_FAILURE(status)) RaiseInternal("no calendar for the locale");
  format.adoptCalendar(calendar.release());
}

// "yy" becomes "yyyy", any other width of the year too; quoted words are left alone.
void ShowFullYear(icu::SimpleDateFormat& format) {
  icu::UnicodeString pattern;
  format.toPattern(pattern);
  icu::UnicodeString result;
  bool quoted = false;
  for (int32_t i = 0; i < pattern.length(); ++i) {
    const char16_t c = pattern[i];
    if (c == u'\'') quoted = !quoted;
    if (quoted || c != u'y') {
      result.append(c);
      continue;
    }
    while (i + 1 < pattern.length() && pattern[i + 1] == u'y') ++i;
    result.append(u"yyyy", 4);
  }
  format.applyPattern(result);
}

icu::Locale Gregorian(const char* name) {
  icu::Locale locale = icu::Locale::createFromName(name);
  UErrorCode status = U_ZERO_ERROR;
  locale.setKeywordValue("calendar", "gregorian", status);
  return locale;
}

std::unique_ptr<icu::SimpleDateFormat> DateFormat(const icu::Locale& locale, icu::DateFormat::EStyle style) {
  auto format = Take(icu::DateFormat::createDateInstance(style, locale));
  UsePlainCalendar(*format, locale);
  if (style == icu::DateFormat::kShort) ShowFullYear(*format);
  return format;
}

std::unique_ptr<icu::SimpleDateFormat> TimeFormat(const icu::Locale& locale) {
  auto format = Take(icu::DateFormat::createTimeInstance(icu::DateFormat::kMedium, locale));
  UsePlainCalendar(*format, locale);
  return format;
}

// Empty for an id that stands for no language of its own, such as "the user's default".
std::string LocaleNameOf(std::int32_t localeId) {
  char name[ULOC_FULLNAME_CAPACITY];
  UErrorCode status = U_ZERO_ERROR;
  const int32_t length =
      localeId > 0 ? uloc_getLocaleForLCID(static_cast<uint32_t>(localeId), name, sizeof name, &status) : 0;
  if (U_FAILURE(status) || length <= 0 || *icu::Locale(name).getLanguage() == '\0') return {};
  return std::string(name, static_cast<std::size_t>(length));
}

}  // namespace

struct DateTexts::Formatters {
  struct OneLocale {
    DatePattern shortDate;
    DatePattern longDate;
    DatePattern time;
  };
  std::mutex mutex;  // ICU's formatters keep state while they format
  std::map<std::int32_t, OneLocale> byId;

  const OneLocale& For(std::int32_t localeId) {
    if (const auto known = byId.find(localeId); known != byId.end()) return known->second;
    const std::string name = LocaleNameOf(localeId);
    if (name.empty()) return For(kFallbackLocaleId);
    const icu::Locale locale = Gregorian(name.c_str());
    OneLocale formats{DatePattern(*DateFormat(locale, icu::DateFormat::kShort)),
                      DatePattern(*DateFormat(locale, icu::DateFormat::kLong)),
                      DatePattern(*TimeFormat(locale))};
    return byId.emplace(localeId, std::move(formats)).first->second;
  }
};

DateTexts::DateTexts() : formatters_(std::make_unique<Formatters>()) {}
DateTexts::~DateTexts() = default;

std::string DateTexts::Text(DateTime value, int style, std::int32_t localeId) const {
  const std::lock_guard<std::mutex> lock(formatters_->mutex);
  const Formatters::OneLocale& formats = formatters_->For(localeId);
  if (style == kLong) return formats.longDate.Text(value);
  std::string text = formats.shortDate.Text(value);
  if (style == kShortWithTime) text += " " + formats.time.Text(value);
  return text;
}

std::string ShortDatePattern(const std::string& icuLocaleName) {
  const auto format =
      Take(icu::DateFormat::createDateInstance(icu::DateFormat::kShort, Gregorian(icuLocaleName.c_str())));
  icu::UnicodeString pattern;
  format->toPattern(pattern);
  std::string utf8;
  pattern.toUTF8String(utf8);
  return utf8;
}

}  // namespace automation
