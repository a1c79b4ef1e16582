#include "platform/locale/short_date.hpp"

#include <gtest/gtest.h>

#include <string>

#include "platform/automation/error.hpp"
#include "tests/support/moment.hpp"

namespace orvane_test {
namespace {

using automation::DateTime;
using automation::ShortDateForm;
using orvane_test::Moment;

const ShortDateForm kMonthFirst{};
const ShortDateForm kDayFirst{{'d', 'M', 'y'}, 2, 2, "."};
const ShortDateForm kYearFirst{{'y', 'M', 'd'}, 2, 2, "/"};

std::int32_t ParseErrorOf(const ShortDateForm& form, const std::string& text) {
  try {
    automation::ParseDateTime(form, text);
  } catch (const automation::Error& error) {
    return error.Number();
  }
  return 0;
}

TEST(ShortDateFormTest, ReadsOrderWidthsAndSeparatorOfAPattern) {
  EXPECT_EQ(automation::ShortDateFormOf("M/d/yy"), kMonthFirst);
  EXPECT_EQ(automation::ShortDateFormOf("dd.MM.yy"), kDayFirst);
  EXPECT_EQ(automation::ShortDateFormOf("y/MM/dd"), kYearFirst);
  EXPECT_EQ(automation::ShortDateFormOf("y-MM-dd"), (ShortDateForm{{'y', 'M', 'd'}, 2, 2, "-"}));
}

TEST(ShortDateFormTest, DropsMarksThatCouldNotBeReadBack) {
  EXPECT_EQ(automation::ShortDateFormOf("d.MM.yy '\xD0\xB3'."), (ShortDateForm{{'d', 'M', 'y'}, 1, 2, "."}));
  EXPECT_EQ(automation::ShortDateFormOf("y. MM. dd."), (ShortDateForm{{'y', 'M', 'd'}, 2, 2, "."}));
  EXPECT_EQ(automation::ShortDateFormOf("d\xE2\x80\x8F/M\xE2\x80\x8F/y"),
            (ShortDateForm{{'d', 'M', 'y'}, 1, 1, "/"}));
  EXPECT_EQ(automation::ShortDateFormOf("d 'de' MMM 'de' y"), (ShortDateForm{{'d', 'M', 'y'}, 1, 2, "/"}));
}

TEST(ShortDateFormTest, IsMonthDayYearForAPatternThatLacksAPart) {
  EXPECT_EQ(automation::ShortDateFormOf("MM.yy"), kMonthFirst);
  EXPECT_EQ(automation::ShortDateFormOf(""), kMonthFirst);
}

TEST(FormatShortDateTest, ShowsFourDigitsOfTheYearAlways) {
  EXPECT_EQ(automation::FormatShortDate(kMonthFirst, Moment(2004, 7, 6)), "7/6/2004");
  EXPECT_EQ(automation::FormatShortDate(kDayFirst, Moment(2004, 7, 6)), "06.07.2004");
  EXPECT_EQ(automation::FormatShortDate(kYearFirst, Moment(812, 12, 31)), "0812/12/31");
}

TEST(ParseDateTimeTest, ReadsWhatTheFormWritesAndTheRunTimestamp) {
  EXPECT_EQ(automation::ParseDateTime(kMonthFirst, "7/26/2004"), Moment(2004, 7, 26));
  EXPECT_EQ(automation::ParseDateTime(kMonthFirst, "7-26-2004 09:05:03"), Moment(2004, 7, 26, 9, 5, 3));
  EXPECT_EQ(automation::ParseDateTime(kDayFirst, "26.07.2004 00:00:00"), Moment(2004, 7, 26));
  EXPECT_EQ(automation::ParseDateTime(kDayFirst, "26-07-2004 23:59:59"), Moment(2004, 7, 26, 23, 59, 59));
  EXPECT_EQ(automation::ParseDateTime(kYearFirst, "2004-07-26 9:05"), Moment(2004, 7, 26, 9, 5));
}

TEST(ParseDateTimeTest, ReadsTheSameTextInTheOrderOfTheForm) {
  EXPECT_EQ(automation::ParseDateTime(kMonthFirst, "3/4/2004"), Moment(2004, 3, 4));
  EXPECT_EQ(automation::ParseDateTime(kDayFirst, "3/4/2004"), Moment(2004, 4, 3));
}

TEST(ParseDateTimeTest, UnderstandsYearMonthDayInEveryForm) {
  for (const ShortDateForm& form : {kMonthFirst, kDayFirst, kYearFirst}) {
    EXPECT_EQ(automation::ParseDateTime(form, "2004-07-26"), Moment(2004, 7, 26));
    EXPECT_EQ(automation::ParseDateTime(form, "2004/7/26 14:05:09"), Moment(2004, 7, 26, 14, 5, 9));
    EXPECT_EQ(automation::ParseDateTime(form, "2004-07-26T14:05:09"), Moment(2004, 7, 26, 14, 5, 9));
    EXPECT_EQ(automation::ParseDateTime(form, "2004-07-26 14:05:09.250"),
              Moment(2004, 7, 26, 14, 5, 9, 250'000));
  }
}

TEST(ParseDateTimeTest, ReadsATimeAloneOnDateZero) {
  EXPECT_EQ(automation::ParseDateTime(kMonthFirst, "14:05"), Moment(1899, 12, 30, 14, 5));
}

TEST(ParseDateTimeTest, ReadsTheTwelveHourClock) {
  EXPECT_EQ(automation::ParseDateTime(kMonthFirst, "7/26/2004 12:00:00 AM"), Moment(2004, 7, 26));
  EXPECT_EQ(automation::ParseDateTime(kMonthFirst, "7/26/2004 12:30 PM"), Moment(2004, 7, 26, 12, 30));
  EXPECT_EQ(automation::ParseDateTime(kMonthFirst, "7/26/2004 9:05:03pm"), Moment(2004, 7, 26, 21, 5, 3));
  EXPECT_EQ(ParseErrorOf(kMonthFirst, "7/26/2004 13:00 PM"), 13);
}

TEST(ParseDateTimeTest, ReadsTwoDigitsOfAYearWithin1930To2029) {
  EXPECT_EQ(automation::ParseDateTime(kMonthFirst, "7/26/29"), Moment(2029, 7, 26));
  EXPECT_EQ(automation::ParseDateTime(kMonthFirst, "7/26/30"), Moment(1930, 7, 26));
}

TEST(ParseDateTimeTest, AllowsBlanksAroundTheText) {
  EXPECT_EQ(automation::ParseDateTime(kMonthFirst, "  7/26/2004   9:05:03  "), Moment(2004, 7, 26, 9, 5, 3));
  EXPECT_EQ(automation::ParseDateTime(kMonthFirst, "7/26/2004 "), Moment(2004, 7, 26));
}

TEST(ParseDateTimeTest, RefusesWhatIsNoDate) {
  for (const char* text : {"",
                           " ",
                           "x",
                           "12abc",
                           "26",
                           "7/26",
                           "7/26/",
                           "7//26/2004",
                           "2/31/2004",
                           "2/29/2003",
                           "13/1/2004",
                           "0/1/2004",
                           "7/26/20045",
                           "7/26/2004x",
                           "7/26/2004 x",
                           "7/26/2004 9",
                           "7/26/2004 24:00:00",
                           "7/26/2004 9:60",
                           "7/26/2004 9:05:60",
                           "7/26/2004 9:05:03.",
                           "-7/26/2004",
                           "7/26/2004 9:05:03 XM",
                           "7 26 2004",
                           "7/26/2004 7/26/2004",
                           "99:99",
                           "7/26/0099",
                           "100/7/26x",
                           "\xE6\x97\xA5"}) {
    EXPECT_EQ(ParseErrorOf(kMonthFirst, text), 13) << text;
  }
}

}  // namespace
TEST(AppendNumberTest, PadsWithZerosAndCutsNothing) {
  std::string text;
  automation::AppendNumber(text, 0, 1);
  automation::AppendNumber(text, 7, 3);
  automation::AppendNumber(text, 12345, 2);
  EXPECT_EQ(text, "000712345");
}

}  // namespace orvane_test
