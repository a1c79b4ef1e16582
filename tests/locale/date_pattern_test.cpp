#include "platform/locale/date_pattern.hpp"

#include <gtest/gtest.h>
#include <unicode/datefmt.h>
#include <unicode/gregocal.h>
#include <unicode/locid.h>
#include <unicode/timezone.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/support/moment.hpp"

namespace orvane_test {
namespace {

using automation::DatePattern;
using automation::DateTime;

const std::vector<DateTime> kMoments = {
    Moment(100, 1, 1),           Moment(1500, 3, 1, 0, 30, 9),    Moment(1899, 12, 30, 12),
    Moment(1970, 1, 1, 1, 1, 1), Moment(2004, 7, 6, 14, 5, 3),    Moment(2024, 2, 29, 23, 59, 59),
    Moment(2026, 9, 10, 9, 9),   Moment(2026, 11, 22, 11, 10, 0), Moment(9999, 12, 31, 13),
    Moment(2026, 7, 6, 12, 30)};

std::unique_ptr<icu::SimpleDateFormat> Plain(icu::DateFormat* made, const icu::Locale& locale) {
  std::unique_ptr<icu::DateFormat> format(made);
  UErrorCode status = U_ZERO_ERROR;
  auto calendar = std::make_unique<icu::GregorianCalendar>(icu::TimeZone::getGMT()->clone(), locale, status);
  calendar->setGregorianChange(-1e16, status);
  EXPECT_TRUE(U_SUCCESS(status));
  format->adoptCalendar(calendar.release());
  return std::unique_ptr<icu::SimpleDateFormat>(dynamic_cast<icu::SimpleDateFormat*>(format.release()));
}

void ExpectAsIcuWrites(const icu::SimpleDateFormat& format, const char* locale) {
  const DatePattern pattern(format);
  for (const DateTime& moment : kMoments) {
    icu::UnicodeString text;
    format.format(static_cast<UDate>(moment.UnixMicroseconds() / 1000), text);
    ASSERT_EQ(pattern.Text(moment), automation::PlainUtf8(text)) << locale;
  }
}

TEST(DatePatternTest, WritesWhatIcuWritesInEveryLocale) {
  std::int32_t count = 0;
  const icu::Locale* const locales = icu::Locale::getAvailableLocales(count);
  ASSERT_GT(count, 500);
  for (std::int32_t i = 0; i < count; ++i) {
    icu::Locale locale = locales[i];
    UErrorCode status = U_ZERO_ERROR;
    locale.setKeywordValue("calendar", "gregorian", status);
    for (const auto style : {icu::DateFormat::kShort, icu::DateFormat::kMedium, icu::DateFormat::kLong}) {
      ExpectAsIcuWrites(*Plain(icu::DateFormat::createDateInstance(style, locale), locale), locale.getName());
    }
    ExpectAsIcuWrites(*Plain(icu::DateFormat::createTimeInstance(icu::DateFormat::kMedium, locale), locale),
                      locale.getName());
  }
}

TEST(DatePatternTest, WritesQuotedWordsAndQuotesAsTheyStand) {
  const icu::Locale locale("en_US");
  const auto format = Plain(icu::DateFormat::createDateInstance(icu::DateFormat::kShort, locale), locale);
  for (const char16_t* text : {u"d 'de' MMMM 'de' yyyy", u"'y''M'' ''' y''yy H", u"hh'h'mm' 'ss a",
                               u"yyyyyMMdd", u"h:mm B", u"hh 'b' b m"}) {
    format->applyPattern(text);
    ExpectAsIcuWrites(*format, "en_US");
  }
}

TEST(DatePatternTest, ShowsNoFractionsOfASecond) {
  const icu::Locale locale("en_US");
  const auto format = Plain(icu::DateFormat::createTimeInstance(icu::DateFormat::kMedium, locale), locale);
  const DateTime tick = DateTime::FromUnixMicroseconds(kMoments[4].UnixMicroseconds() + 999'999);
  EXPECT_EQ(DatePattern(*format).Text(tick), "2:05:03 PM");
}

}  // namespace
}  // namespace orvane_test
