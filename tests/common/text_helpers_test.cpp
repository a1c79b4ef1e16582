#include "common/text_helpers.hpp"

#include <gtest/gtest.h>

#include "tests/support/test_runtime.hpp"

namespace OrvaneUtilities {
namespace {

using automation::DateTime;

class TextHelpersTest : public testing::Test {
 protected:
  void SetNow(const automation::DateTimeParts& parts) { environment_.now = DateTime::FromParts(parts); }

  orvane_test::TestRuntime environment_;
};

TEST_F(TextHelpersTest, TimestampIsShortDateWithDashesAndPaddedTime) {
  SetNow({.year = 2004, .month = 7, .day = 26, .hour = 9, .minute = 5, .second = 3});
  EXPECT_EQ(GetTimestampText(), "7-26-2004 09:05:03");
}

TEST_F(TextHelpersTest, TimestampPadsNineSecondsPastFivePastNine) {
  SetNow({.year = 2004, .month = 7, .day = 26, .hour = 9, .minute = 5, .second = 9});
  EXPECT_EQ(GetTimestampText(), "7-26-2004 09:05:09");
}

TEST_F(TextHelpersTest, TimestampOfMidnightShowsZeros) {
  SetNow({.year = 2004, .month = 12, .day = 31});
  EXPECT_EQ(GetTimestampText(), "12-31-2004 00:00:00");
}

TEST_F(TextHelpersTest, TimestampUsesTheTwentyFourHourClockAndDropsTheFraction) {
  SetNow(
      {.year = 2004, .month = 7, .day = 26, .hour = 23, .minute = 59, .second = 59, .microsecond = 999999});
  EXPECT_EQ(GetTimestampText(), "7-26-2004 23:59:59");
}

TEST_F(TextHelpersTest, TimestampFollowsTheLocalesOrderAndReplacesItsSeparator) {
  environment_.locale->separator = ".";
  environment_.locale->dayFirst = true;
  SetNow({.year = 2004, .month = 7, .day = 26, .hour = 9, .minute = 5, .second = 3});
  EXPECT_EQ(GetTimestampText(), "26-7-2004 09:05:03");
}

TEST_F(TextHelpersTest, TimestampReplacesASeparatorOfSeveralCharacters) {
  environment_.locale->separator = ". ";
  SetNow({.year = 2004, .month = 7, .day = 26, .hour = 9, .minute = 5, .second = 3});
  EXPECT_EQ(GetTimestampText(), "7-26-2004 09:05:03");
}

TEST_F(TextHelpersTest, TimestampKeepsTheDateTextWhenTheLocaleGivesNoSeparator) {
  environment_.locale->failing = true;
  SetNow({.year = 2004, .month = 7, .day = 26, .hour = 9, .minute = 5, .second = 3});
  EXPECT_EQ(GetTimestampText(), "7/26/2004 09:05:03");
}

TEST_F(TextHelpersTest, DateSeparatorIsTheLocales) {
  environment_.locale->separator = "-";
  EXPECT_EQ(GetDateSeparator(), "-");
}

TEST_F(TextHelpersTest, DateSeparatorEndsAtTheFirstNullCharacter) {
  environment_.locale->separator = std::string(".\0junk", 6);
  EXPECT_EQ(GetDateSeparator(), ".");
}

TEST_F(TextHelpersTest, DateSeparatorIsEmptyWhenTheLocaleCannotBeAsked) {
  environment_.locale->failing = true;
  EXPECT_EQ(GetDateSeparator(), "");
  environment_.runtime.locale = nullptr;
  EXPECT_EQ(GetDateSeparator(), "");
}

TEST(OdbcTimestampTest, PadsEveryComponent) {
  EXPECT_EQ(ToOdbcTimestamp(DateTime::FromParts(
                {.year = 2004, .month = 7, .day = 3, .hour = 14, .minute = 5, .second = 9})),
            "{ts '2004-07-03 14:05:09'}");
}

TEST(OdbcTimestampTest, DateWithoutTimeGivesMidnight) {
  EXPECT_EQ(ToOdbcTimestamp(DateTime::FromDate(2004, 12, 31)), "{ts '2004-12-31 00:00:00'}");
}

TEST(OdbcTimestampTest, FractionOfASecondIsDropped) {
  EXPECT_EQ(ToOdbcTimestamp(DateTime::FromParts({.year = 2004,
                                                 .month = 7,
                                                 .day = 3,
                                                 .hour = 23,
                                                 .minute = 59,
                                                 .second = 59,
                                                 .microsecond = 999999})),
            "{ts '2004-07-03 23:59:59'}");
}

TEST(TwoDigitsTest, PadsOnlyWhatHasOneCharacter) {
  EXPECT_EQ(TwoDigits(0), "00");
  EXPECT_EQ(TwoDigits(9), "09");
  EXPECT_EQ(TwoDigits(10), "10");
  EXPECT_EQ(TwoDigits(2004), "2004");
}

TEST(NormalizeFolderPathTest, TurnsSlashesAndDropsTheLastBackslash) {
  EXPECT_EQ(NormalizeFolderPath("C:/data/"), "C:\\data");
  EXPECT_EQ(NormalizeFolderPath("C:\\data\\"), "C:\\data");
  EXPECT_EQ(NormalizeFolderPath("a/b\\c/d"), "a\\b\\c\\d");
}

TEST(NormalizeFolderPathTest, EmptyStaysEmpty) {
  EXPECT_EQ(NormalizeFolderPath(""), "");
}

TEST(NormalizeFolderPathTest, DropsOneOfTwoTrailingBackslashes) {
  EXPECT_EQ(NormalizeFolderPath("C:\\data\\\\"), "C:\\data\\");
  EXPECT_EQ(NormalizeFolderPath("C:/data//"), "C:\\data\\");
  EXPECT_EQ(NormalizeFolderPath("/"), "");
}

TEST(ReplaceAllTest, ReplacesFromLeftToRightWithoutLookingAtItsOwnResult) {
  EXPECT_EQ(ReplaceAll("a--b--c", "--", "-"), "a-b-c");
  EXPECT_EQ(ReplaceAll("aaa", "aa", "b"), "ba");
  EXPECT_EQ(ReplaceAll("xx", "x", "xx"), "xxxx");
  EXPECT_EQ(ReplaceAll("text", "", "-"), "text");
}

TEST_F(TextHelpersTest, DateTextAsksTheLocaleForStyleAndLanguage) {
  EXPECT_EQ(GetDateText(DateTime::FromDate(2004, 7, 26), 3, 1043), "7/26/2004[3,1043]");
}

}  // namespace
}  // namespace OrvaneUtilities
