#include "platform/automation/date_time.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <vector>

#include "platform/automation/error.hpp"
#include "tests/support/error_number.hpp"
#include "tests/support/moment.hpp"

namespace orvane_test {
namespace {

using automation::DateTime;
using automation::DateTimeParts;
using orvane_test::Moment;

TEST(DateTimeTest, StartsAtDateZero) {
  EXPECT_EQ(DateTime().Parts(), (DateTimeParts{.year = 1899, .month = 12, .day = 30}));
  EXPECT_EQ(DateTime(), DateTime::FromDate(1899, 12, 30));
}

TEST(DateTimeTest, GivesBackThePartsItWasMadeOf) {
  const std::vector<DateTimeParts> moments = {
      {.year = 100, .month = 1, .day = 1},
      {.year = 1899, .month = 12, .day = 29, .hour = 23, .minute = 59, .second = 59, .microsecond = 999'999},
      {.year = 1969, .month = 12, .day = 31, .hour = 23, .minute = 59, .second = 59, .microsecond = 1},
      {.year = 2004, .month = 2, .day = 29, .hour = 12},
      {.year = 9999, .month = 12, .day = 31, .hour = 23, .minute = 59, .second = 59, .microsecond = 999'999}};
  for (const DateTimeParts& parts : moments) EXPECT_EQ(DateTime::FromParts(parts).Parts(), parts);
}

TEST(DateTimeTest, RefusesPartsThatNameNoMoment) {
  const std::vector<DateTimeParts> wrong = {{.year = 99, .month = 1, .day = 1},
                                            {.year = 10000, .month = 1, .day = 1},
                                            {.year = 2004, .month = 0, .day = 1},
                                            {.year = 2004, .month = 13, .day = 1},
                                            {.year = 2004, .month = 257, .day = 1},
                                            {.year = 2004, .month = 1, .day = 0},
                                            {.year = 2004, .month = 1, .day = 257},
                                            {.year = 2003, .month = 2, .day = 29},
                                            {.year = 2004, .month = 4, .day = 31},
                                            {.year = 2004, .month = 1, .day = 1, .hour = 24},
                                            {.year = 2004, .month = 1, .day = 1, .minute = 60},
                                            {.year = 2004, .month = 1, .day = 1, .second = 60},
                                            {.year = 2004, .month = 1, .day = 1, .second = -1},
                                            {.year = 2004, .month = 1, .day = 1, .microsecond = 1'000'000}};
  for (const DateTimeParts& parts : wrong) {
    EXPECT_FALSE(DateTime::IsValid(parts));
    EXPECT_EQ(ErrorNumberOf([&parts] { DateTime::FromParts(parts); }), 5);
  }
}

TEST(DateTimeTest, CutsOffTimeAndFractionDownwards) {
  const DateTime beforeZero = Moment(1899, 12, 29, 18, 30, 15, 250'000);
  EXPECT_EQ(beforeZero.DatePart(), DateTime::FromDate(1899, 12, 29));
  EXPECT_EQ(beforeZero.WithoutFraction(), Moment(1899, 12, 29, 18, 30, 15));
  EXPECT_EQ(Moment(2004, 7, 26, 9, 5, 3, 999'999).WithoutFraction(), Moment(2004, 7, 26, 9, 5, 3));
}

TEST(DateTimeTest, MovesAcrossMonthsYearsAndLeapDays) {
  EXPECT_EQ(automation::AddDays(Moment(2004, 2, 28, 9, 5), 1), Moment(2004, 2, 29, 9, 5));
  EXPECT_EQ(automation::AddDays(Moment(2003, 2, 28, 9, 5), 1), Moment(2003, 3, 1, 9, 5));
  EXPECT_EQ(automation::AddDays(Moment(2004, 1, 1, 0, 0), -1), Moment(2003, 12, 31, 0, 0));
  EXPECT_EQ(automation::AddHours(Moment(2004, 1, 1, 1, 30), -24), Moment(2003, 12, 31, 1, 30));
  EXPECT_EQ(automation::AddMinutes(Moment(2004, 12, 31, 23, 59), 1), Moment(2005, 1, 1, 0, 0));
}

TEST(DateTimeTest, RefusesToMoveOutOfItsYears) {
  EXPECT_EQ(ErrorNumberOf([] { automation::AddDays(DateTime::FromDate(9999, 12, 31), 1); }), 5);
  EXPECT_EQ(ErrorNumberOf([] { automation::AddMinutes(DateTime::FromDate(100, 1, 1), -1); }), 5);
  EXPECT_EQ(ErrorNumberOf([] { automation::AddHours(DateTime(), std::numeric_limits<std::int64_t>::max()); }),
            5);
  EXPECT_EQ(ErrorNumberOf([] { automation::AddDays(DateTime(), std::numeric_limits<std::int64_t>::min()); }),
            5);
  EXPECT_EQ(automation::AddMinutes(Moment(9999, 12, 31, 23, 58), 1), Moment(9999, 12, 31, 23, 59));
}

TEST(DateTimeTest, CountsMinuteBoundariesWithoutRegardToSeconds) {
  const DateTime early = Moment(2004, 7, 26, 9, 5, 59);
  EXPECT_EQ(automation::MinuteBoundaries(early, Moment(2004, 7, 26, 9, 6, 0)), 1);
  EXPECT_EQ(automation::MinuteBoundaries(Moment(2004, 7, 26, 9, 5, 0), early), 0);
  EXPECT_EQ(automation::MinuteBoundaries(Moment(2004, 7, 26, 9, 6, 0), early), -1);
  EXPECT_EQ(automation::MinuteBoundaries(Moment(2004, 7, 25, 9, 5), Moment(2004, 7, 26, 9, 5)), 1440);
  EXPECT_EQ(automation::MinuteBoundaries(Moment(1969, 12, 31, 23, 59, 30), Moment(1970, 1, 1, 0, 0)), 1);
}

TEST(DateTimeTest, CountsMonthBoundariesWithoutRegardToDays) {
  EXPECT_EQ(automation::MonthBoundaries(DateTime::FromDate(2004, 1, 31), DateTime::FromDate(2004, 2, 1)), 1);
  EXPECT_EQ(automation::MonthBoundaries(DateTime::FromDate(2004, 1, 1), DateTime::FromDate(2004, 1, 31)), 0);
  EXPECT_EQ(automation::MonthBoundaries(DateTime::FromDate(2003, 12, 31), DateTime::FromDate(2004, 1, 1)), 1);
  EXPECT_EQ(automation::MonthBoundaries(DateTime::FromDate(2004, 1, 1), DateTime::FromDate(2003, 12, 31)),
            -1);
}

}  // namespace
}  // namespace orvane_test
