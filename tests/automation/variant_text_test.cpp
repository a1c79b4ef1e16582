// Variants as text, their type names and their equality.
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
using automation::VariantArray;

TEST(ToTextTest, WritesPlainDecimalNumbers) {
  EXPECT_EQ(automation::ToText(std::int32_t{1234567}), "1234567");
  EXPECT_EQ(automation::ToText(std::int16_t{-5}), "-5");
  EXPECT_EQ(automation::ToText(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
  EXPECT_EQ(automation::ToText(0.1), "0.1");
  EXPECT_EQ(automation::ToText(5531.0), "5531");
  EXPECT_EQ(automation::ToText(123456789012345.0), "123456789012345");
  EXPECT_EQ(automation::ToText(1e15), "1E+15");
  EXPECT_EQ(automation::ToText(1.0 / 3.0), "0.333333333333333");
  EXPECT_EQ(automation::ToText(-0.0), "0");
}

TEST(ToTextTest, WritesBooleansEmptyAndText) {
  EXPECT_EQ(automation::ToText(true), "True");
  EXPECT_EQ(automation::ToText(false), "False");
  EXPECT_EQ(automation::ToText(Variant()), "");
  EXPECT_EQ(automation::ToText(" a b "), " a b ");
}

TEST(ToTextTest, WritesDatesInTheLocalesGeneralForm) {
  const TestRuntime runtime;
  EXPECT_EQ(automation::ToText(DateTime::FromDate(2004, 7, 26)), "7/26/2004");
  EXPECT_EQ(automation::ToText(DateTime::FromParts(
                {.year = 2004, .month = 7, .day = 26, .hour = 9, .minute = 5, .second = 3})),
            "7/26/2004 09:05:03");
}

TEST(ToTextTest, RefusesNullArraysAndObjects) {
  EXPECT_EQ(ErrorNumberOf([] { automation::ToText(Variant::Null()); }), 94);
  EXPECT_EQ(ErrorNumberOf([] { automation::ToText(VariantArray{"a"}); }), 13);
  EXPECT_EQ(ErrorNumberOf([] { automation::ToText(automation::ObjectPtr(std::make_shared<Thing>())); }), 438);
  EXPECT_EQ(ErrorNumberOf([] { automation::ToText(automation::ObjectPtr()); }), 91);
}

TEST(ToTextOrEmptyTest, TakesNullForEmptyTextOnly) {
  EXPECT_EQ(automation::ToTextOrEmpty(Variant::Null()), "");
  EXPECT_EQ(automation::ToTextOrEmpty(std::int32_t{7}), "7");
  EXPECT_EQ(ErrorNumberOf([] { automation::ToTextOrEmpty(VariantArray{}); }), 13);
}

TEST(VariantEqualityTest, NeedsTheSameTypeAndValue) {
  EXPECT_EQ(Variant("a"), Variant(std::string("a")));
  EXPECT_NE(Variant(std::int32_t{1}), Variant(std::int16_t{1}));
  EXPECT_NE(Variant("1"), Variant(std::int32_t{1}));
  EXPECT_NE(Variant(), Variant::Null());
  EXPECT_EQ(Variant(VariantArray{"a", std::int32_t{1}}), Variant(VariantArray{"a", std::int32_t{1}}));
  EXPECT_NE(Variant(VariantArray{"a"}), Variant(VariantArray{"b"}));
  const automation::ObjectPtr thing = std::make_shared<Thing>();
  EXPECT_EQ(Variant(thing), Variant(thing));
  EXPECT_NE(Variant(thing), Variant(automation::ObjectPtr(std::make_shared<Thing>())));
}

}  // namespace
}  // namespace orvane_test
