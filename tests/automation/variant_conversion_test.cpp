// Variants as numbers, Booleans and dates.
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <string>

#include "platform/automation/error.hpp"
#include "platform/automation/variant.hpp"
#include "tests/automation/thing.hpp"
#include "tests/support/error_number.hpp"
#include "tests/support/test_runtime.hpp"

namespace orvane_test {
namespace {

using automation::DateTime;
using automation::Variant;

TEST(WholeNumberTest, RoundsHalvesToTheEvenNeighbour) {
  EXPECT_EQ(automation::ToInt32(0.5), 0);
  EXPECT_EQ(automation::ToInt32(1.5), 2);
  EXPECT_EQ(automation::ToInt32(2.5), 2);
  EXPECT_EQ(automation::ToInt32(-0.5), 0);
  EXPECT_EQ(automation::ToInt32(-1.5), -2);
  EXPECT_EQ(automation::ToInt32(-2.5), -2);
  EXPECT_EQ(automation::ToInt32(2.4999999), 2);
  EXPECT_EQ(automation::ToInt32(2.5000001), 3);
  EXPECT_EQ(automation::ToInt32("24.5"), 24);
}

TEST(WholeNumberTest, OverflowsPastTheRangeOfTheType) {
  EXPECT_EQ(automation::ToInt32("2147483647"), 2147483647);
  EXPECT_EQ(automation::ToInt32("-2147483648"), std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(automation::ToInt32(2147483647.4), 2147483647);
  EXPECT_EQ(ErrorNumberOf([] { automation::ToInt32("2147483648"); }), 6);
  EXPECT_EQ(ErrorNumberOf([] { automation::ToInt32(2147483647.5); }), 6);
  EXPECT_EQ(ErrorNumberOf([] { automation::ToInt16(std::int32_t{32768}); }), 6);
  EXPECT_EQ(automation::ToInt16(std::int32_t{-32768}), -32768);
  EXPECT_EQ(automation::ToInt64("9223372036854775807"), std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(ErrorNumberOf([] { automation::ToInt64("9223372036854775808"); }), 6);
  EXPECT_EQ(ErrorNumberOf([] { automation::ToInt64(1e300); }), 6);
  EXPECT_EQ(ErrorNumberOf([] { automation::ToInt64(std::numeric_limits<double>::quiet_NaN()); }), 6);
  EXPECT_EQ(ErrorNumberOf([] { automation::ToInt32("1e999"); }), 6);
}

TEST(WholeNumberTest, ReadsTextWithBlanksSignFractionAndExponent) {
  EXPECT_EQ(automation::ToInt32(" 24 "), 24);
  EXPECT_EQ(automation::ToInt32("\t24\r\n"), 24);
  EXPECT_EQ(automation::ToInt32("+24"), 24);
  EXPECT_EQ(automation::ToInt32("-24"), -24);
  EXPECT_EQ(automation::ToInt32("024"), 24);
  EXPECT_EQ(automation::ToInt32("24."), 24);
  EXPECT_EQ(automation::ToInt32(".5e1"), 5);
}

TEST(WholeNumberTest, RefusesTextThatIsNoNumber) {
  for (const char* text :
       {"", " ", "12abc", "abc", "1 2", "+-1", "--1", "-", ".", "1,5", "0x10", "&H10", "inf", "nan", "1e"}) {
    EXPECT_EQ(ErrorNumberOf([text] { automation::ToInt32(text); }), 13) << text;
    EXPECT_FALSE(automation::IsNumeric(text)) << text;
  }
}

TEST(WholeNumberTest, TakesTrueForMinusOneAndEmptyForZero) {
  EXPECT_EQ(automation::ToInt32(true), -1);
  EXPECT_EQ(automation::ToInt32(false), 0);
  EXPECT_EQ(automation::ToInt32(Variant()), 0);
}

TEST(WholeNumberTest, TakesADateForItsDays) {
  EXPECT_EQ(automation::ToInt32(DateTime::FromDate(1900, 1, 1)), 2);
  EXPECT_EQ(automation::ToInt32(DateTime::FromDate(1899, 12, 29)), -1);
}

TEST(ConversionTest, RefusesNullArraysAndObjects) {
  EXPECT_EQ(ErrorNumberOf([] { automation::ToInt32(Variant::Null()); }), 94);
  EXPECT_EQ(ErrorNumberOf([] { automation::ToDouble(Variant::Null()); }), 94);
  EXPECT_EQ(ErrorNumberOf([] { automation::ToBoolean(Variant::Null()); }), 94);
  EXPECT_EQ(ErrorNumberOf([] { automation::ToDateTime(Variant::Null()); }), 94);
  EXPECT_EQ(ErrorNumberOf([] { automation::ToInt32(automation::VariantArray{}); }), 13);
  EXPECT_EQ(ErrorNumberOf([] { automation::ToInt32(automation::ObjectPtr(std::make_shared<Thing>())); }),
            438);
  EXPECT_EQ(ErrorNumberOf([] { automation::ToInt32(automation::ObjectPtr()); }), 91);
}

TEST(ToDoubleTest, KeepsFractions) {
  EXPECT_EQ(automation::ToDouble(" -1.25e2 "), -125.0);
  EXPECT_EQ(automation::ToDouble(DateTime::FromParts({.year = 1899, .month = 12, .day = 31, .hour = 6})),
            1.25);
}

TEST(ToDoubleTest, CountsTheTimeOfADayBeforeDateZeroForwards) {
  EXPECT_EQ(automation::ToDouble(DateTime::FromParts({.year = 1899, .month = 12, .day = 29, .hour = 6})),
            -1.25);
}

TEST(ToBooleanTest, ReadsTheWordsInAnyCaseAndNumbers) {
  for (const char* text : {"true", "True", "TRUE", " true ", "1", "-1", "0.1", "2e3"}) {
    EXPECT_TRUE(automation::ToBoolean(text)) << text;
  }
  for (const char* text : {"false", "False", "FALSE", "0", "0.0", "-0"})
    EXPECT_FALSE(automation::ToBoolean(text)) << text;
  for (const char* text : {"", " ", "yes", "on", "t", "truee"}) {
    EXPECT_EQ(ErrorNumberOf([text] { automation::ToBoolean(text); }), 13) << text;
  }
  EXPECT_TRUE(automation::ToBoolean(std::int16_t{-1}));
  EXPECT_FALSE(automation::ToBoolean(std::int32_t{0}));
  EXPECT_FALSE(automation::ToBoolean(Variant()));
}

TEST(ToDateTimeTest, ReadsTextAsTheLocaleDoes) {
  TestRuntime runtime;
  EXPECT_EQ(automation::ToDateTime("7/26/2004"), DateTime::FromDate(2004, 7, 26));
  runtime.locale->dayFirst = true;
  EXPECT_EQ(automation::ToDateTime("7/6/2004"), DateTime::FromDate(2004, 6, 7));
  EXPECT_EQ(ErrorNumberOf([] { automation::ToDateTime("abc"); }), 13);
}

TEST(ToDateTimeTest, ReadsNumbersAsDaysSinceDateZero) {
  EXPECT_EQ(automation::ToDateTime(0.0), DateTime());
  EXPECT_EQ(automation::ToDateTime(std::int32_t{38194}), DateTime::FromDate(2004, 7, 26));
  EXPECT_EQ(automation::ToDateTime(38194.5),
            DateTime::FromParts({.year = 2004, .month = 7, .day = 26, .hour = 12}));
  EXPECT_EQ(automation::ToDateTime(-1.25),
            DateTime::FromParts({.year = 1899, .month = 12, .day = 29, .hour = 6}));
}

TEST(ToDateTimeTest, OverflowsPastItsYears) {
  EXPECT_EQ(automation::ToDateTime(2958465.0), DateTime::FromDate(9999, 12, 31));
  EXPECT_EQ(automation::ToDateTime(-657434.5),
            DateTime::FromParts({.year = 100, .month = 1, .day = 1, .hour = 12}));
  EXPECT_EQ(ErrorNumberOf([] { automation::ToDateTime(2958466.0); }), 6);
  EXPECT_EQ(ErrorNumberOf([] { automation::ToDateTime(2958465.9999999999); }), 6);
  EXPECT_EQ(ErrorNumberOf([] { automation::ToDateTime(-657435.0); }), 6);
  EXPECT_EQ(ErrorNumberOf([] { automation::ToDateTime(1e300); }), 6);
}

TEST(ToDateTimeTest, ComesBackFromItsNumber) {
  for (const DateTime moment :
       {DateTime::FromParts({.year = 1850, .month = 5, .day = 1, .hour = 18, .minute = 30}),
        DateTime::FromParts({.year = 2004, .month = 7, .day = 26, .hour = 9, .minute = 5, .second = 3})}) {
    EXPECT_EQ(automation::ToDateTime(automation::ToDouble(moment)), moment);
  }
}

TEST(IsNumericTest, IsTrueForNumbersBooleansAndEmptyOnly) {
  EXPECT_TRUE(automation::IsNumeric(Variant()));
  EXPECT_TRUE(automation::IsNumeric(true));
  EXPECT_TRUE(automation::IsNumeric(1.5));
  EXPECT_TRUE(automation::IsNumeric(" 30 "));
  EXPECT_FALSE(automation::IsNumeric("1e999"));
  EXPECT_FALSE(automation::IsNumeric(Variant::Null()));
  EXPECT_FALSE(automation::IsNumeric(DateTime()));
  EXPECT_FALSE(automation::IsNumeric(automation::ObjectPtr()));
}

}  // namespace
}  // namespace orvane_test
