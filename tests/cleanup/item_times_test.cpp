#include "jobs/cleanup/item_times.hpp"

#include <gtest/gtest.h>

#include "platform/automation/error.hpp"
#include "tests/support/test_runtime.hpp"

namespace OrvaneProcess {
namespace {

using automation::DateTime;
using automation::Variant;

class ItemTimesTest : public testing::Test {
 protected:
  static DateTime At(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
    return DateTime::FromParts(
        {.year = year, .month = month, .day = day, .hour = hour, .minute = minute, .second = second});
  }

  orvane_test::TestRuntime environment_;
};

TEST_F(ItemTimesTest, TheTextIsTheShortDateWithHyphensAndATwoDigitTime) {
  environment_.locale->dayFirst = true;
  EXPECT_EQ(ItemTimeText(At(2004, 3, 5, 7, 4, 9)), "5-3-2004 07:04:09");
  EXPECT_EQ(ItemTimeText(At(2004, 12, 31)), "31-12-2004 00:00:00");
}

TEST_F(ItemTimesTest, OnlyATextWithoutAnyHyphenHasItsSeparatorsReplaced) {
  environment_.locale->separator = ".";
  EXPECT_EQ(ItemTimeText(At(2004, 3, 5, 7, 4, 9)), "3-5-2004 07:04:09");
  environment_.locale->separator = "-.";
  EXPECT_EQ(ItemTimeText(At(2004, 3, 5, 7, 4, 9)), "3-.5-.2004 07:04:09");
}

TEST_F(ItemTimesTest, ALocaleThatCannotNameItsSeparatorLeavesTheDateAsItIs) {
  environment_.locale->failing = true;
  EXPECT_EQ(ItemTimeText(At(2004, 3, 5, 7, 4, 9)), "3/5/2004 07:04:09");
}

TEST_F(ItemTimesTest, EveryRenderingEndsInAMissingObject) {
  for (const DateTime time : {At(2004, 3, 5, 7, 4, 9), At(1899, 12, 30), environment_.now}) {
    try {
      RenderItemTime(time);
      ADD_FAILURE() << "the rendering came back";
    } catch (const automation::Error& error) {
      EXPECT_EQ(error.Number(), 424);
      EXPECT_EQ(error.Description(), "Object required");
    }
  }
}

TEST_F(ItemTimesTest, AnItemUsedWithinTheKeepPeriodPassesTheAgeTest) {
  const Variant start = "7-26-2004 09:05:03";
  EXPECT_TRUE(AgeTestPasses(1440, "7-26-2004 08:05:03", start));   // an hour ago
  EXPECT_FALSE(AgeTestPasses(1440, "7-19-2004 09:05:03", start));  // a week ago
  EXPECT_TRUE(AgeTestPasses(1440, "7-25-2004 09:05:59", start));   // 1440 minutes
  EXPECT_FALSE(AgeTestPasses(1440, "7-25-2004 09:04:59", start));  // 1441
  EXPECT_TRUE(AgeTestPasses(1440, "7-27-2004 09:05:03", start));   // tomorrow
}

TEST_F(ItemTimesTest, AgesAreMinuteBoundariesWhateverTheSeconds) {
  EXPECT_TRUE(AgeTestPasses(0, "7-26-2004 09:05:00", "7-26-2004 09:05:59"));
  EXPECT_FALSE(AgeTestPasses(0, "7-26-2004 09:04:59", "7-26-2004 09:05:00"));
  EXPECT_TRUE(AgeTestPasses(1, "7-26-2004 09:04:00", "7-26-2004 09:05:59"));
}

TEST_F(ItemTimesTest, WithoutAKeepPeriodOnlyTheMinuteOfTheStartAndLaterPass) {
  const Variant start = "7-26-2004 09:05:03";
  EXPECT_TRUE(AgeTestPasses(0, "7-26-2004 09:05:59", start));
  EXPECT_TRUE(AgeTestPasses(0, "7-26-2004 09:06:00", start));
  EXPECT_FALSE(AgeTestPasses(0, "7-26-2004 09:04:59", start));
}

TEST_F(ItemTimesTest, TheMonthTestComparesMonthsWithMinutes) {
  const Variant start = "7-26-2004 09:05:03";
  EXPECT_TRUE(MonthTestPasses(1440, "7-26-1904 09:05:03", start));   // 1200 months
  EXPECT_TRUE(MonthTestPasses(1440, "7-31-1884 23:59:59", start));   // 1440 months
  EXPECT_FALSE(MonthTestPasses(1440, "6-30-1884 23:59:59", start));  // 1441 months
  EXPECT_TRUE(MonthTestPasses(0, "7-1-2004 00:00:00", start));
  EXPECT_FALSE(MonthTestPasses(0, "6-30-2004 23:59:59", start));
  EXPECT_TRUE(MonthTestPasses(1, "6-1-2004 00:00:00", start));
}

TEST_F(ItemTimesTest, BothTimesAreReadInTheLocalesOrder) {
  environment_.locale->dayFirst = true;
  EXPECT_TRUE(AgeTestPasses(60, "26-7-2004 08:30:00", "26-7-2004 09:05:03"));
}

TEST_F(ItemTimesTest, ATextThatIsNoDateIsATypeMismatch) {
  for (const auto& test : {AgeTestPasses, MonthTestPasses}) {
    try {
      test(1440, "yesterday", "7-26-2004 09:05:03");
      ADD_FAILURE() << "no error";
    } catch (const automation::Error& error) {
      EXPECT_EQ(error.Number(), 13);
    }
  }
}

}  // namespace
}  // namespace OrvaneProcess
