#include "platform/locale/date_pattern.hpp"

#include <gtest/gtest.h>

namespace {

using automation::AppendNumber;
using automation::DatePattern;

constexpr automation::DateTimeParts kEarly{2004, 1, 2, 3, 4, 5, 0};
constexpr automation::DateTimeParts kLate{1999, 12, 31, 23, 58, 59, 0};

std::string Text(std::string_view pattern, const automation::DateTimeParts& parts) {
  const auto read = DatePattern::Read(pattern, {"before", "after"});
  return read ? read->Text(parts) : "none";
}

TEST(DatePatternTest, WritesNumbersInTheWidthOfTheirLetters) {
  EXPECT_EQ(Text("dd-MM-yyyy", kEarly), "02-01-2004");
  EXPECT_EQ(Text("d/M/y", kEarly), "2/1/2004");
  EXPECT_EQ(Text("d/M/y", kLate), "31/12/1999");
  EXPECT_EQ(Text("H:mm:ss", kEarly), "3:04:05");
  EXPECT_EQ(Text("yyyy", {.year = 987}), "0987");
}

TEST(DatePatternTest, CountsTwelveHoursInEachHalfOfTheDay) {
  EXPECT_EQ(Text("h:mm a", kEarly), "3:04 before");
  EXPECT_EQ(Text("hh a", kLate), "11 after");
  EXPECT_EQ(Text("h a", {.hour = 0}), "12 before");
  EXPECT_EQ(Text("h a", {.hour = 12}), "12 after");
}

TEST(DatePatternTest, KeepsTextAsItStands) {
  EXPECT_EQ(Text("y'年'M'y''s' d.", kEarly), "2004年1y's 2.");
  EXPECT_EQ(Text("H''mm", kEarly), "3'04");
  EXPECT_EQ(Text("", kEarly), "");
}

TEST(DatePatternTest, LeavesNamesErasAndTwoDigitYearsToIcu) {
  for (const char* pattern : {"MMM", "LL", "yy", "G y", "EEEE", "K", "k", "B", "z", "dd MMMM yyyy", "aaaa"}) {
    EXPECT_EQ(Text(pattern, kEarly), "none") << pattern;
  }
}

TEST(AppendNumberTest, PadsWithZerosAndCutsNothing) {
  std::string text;
  AppendNumber(text, 0, 1);
  AppendNumber(text, 7, 3);
  AppendNumber(text, 12345, 2);
  EXPECT_EQ(text, "000712345");
}

}  // namespace
