#include "suite/outbox/json_line.hpp"

#include <gtest/gtest.h>

#include <limits>

#include "tests/support/raised_error.hpp"
#include "tests/support/test_runtime.hpp"

namespace suite {
namespace {

using automation::Variant;

class JsonLineTest : public testing::Test {
 protected:
  orvane_test::TestRuntime runtime_;
};

TEST_F(JsonLineTest, MembersStandInTheOrderOfTheCalls) {
  JsonLine line;
  line.Add("B", "text").Add("A", 12).Add("C", Variant::Null()).Add("D", true).Add("E", Variant());
  EXPECT_EQ(line.Text(), "{\"B\":\"text\",\"A\":12,\"C\":null,\"D\":true,\"E\":null}\n");
}

TEST_F(JsonLineTest, AnObjectWithoutMembersIsEmpty) {
  EXPECT_EQ(JsonLine().Text(), "{}\n");
}

TEST_F(JsonLineTest, NumbersArePlain) {
  JsonLine line;
  line.Add("a", std::numeric_limits<std::int64_t>::min()).Add("b", std::int16_t{4}).Add("c", 1.5);
  EXPECT_EQ(line.Text(), "{\"a\":-9223372036854775808,\"b\":4,\"c\":1.5}\n");
}

TEST_F(JsonLineTest, DatesArePlainTexts) {
  EXPECT_EQ(JsonLine().Add("a", runtime_.now).Text(), "{\"a\":\"2004-07-26 09:05:03\"}\n");
}

TEST_F(JsonLineTest, ATextCannotLeaveItsQuotesOrItsLine) {
  EXPECT_EQ(JsonLine().Add("a\"b", "x\"y\\z\r\n\t\x01\x7F").Text(),
            "{\"a\\\"b\":\"x\\\"y\\\\z\\u000d\\u000a\\u0009\\u0001\\u007f\"}\n");
}

TEST_F(JsonLineTest, UnicodeStaysAsItIs) {
  EXPECT_EQ(JsonLine().Add("a", "é日\xF0\x9F\x98\x80").Text(), "{\"a\":\"é日\xF0\x9F\x98\x80\"}\n");
}

TEST_F(JsonLineTest, BytesThatAreNoUtf8AreReplaced) {
  // A stray byte, an overlong form, a surrogate, a character beyond the last one, half a character.
  EXPECT_EQ(JsonLine().Add("a", "x\xFFy").Text(), "{\"a\":\"x\xEF\xBF\xBDy\"}\n");
  const std::string r = "\xEF\xBF\xBD";
  EXPECT_EQ(JsonLine().Add("a", "\xC0\x80").Text(), "{\"a\":\"" + r + r + "\"}\n");
  EXPECT_EQ(JsonLine().Add("a", "\xED\xA0\x80").Text(), "{\"a\":\"" + r + r + r + "\"}\n");
  EXPECT_EQ(JsonLine().Add("a", "\xF4\x90\x80\x80").Text(), "{\"a\":\"" + r + r + r + r + "\"}\n");
  EXPECT_EQ(JsonLine().Add("a", "\xE6\x97").Text(), "{\"a\":\"" + r + r + "\"}\n");
}

TEST_F(JsonLineTest, OtherValuesAreRefused) {
  JsonLine line;
  EXPECT_EQ(orvane_test::ErrorOf([&] { line.Add("a", automation::VariantArray{1}); }).Number(), 13);
  EXPECT_EQ(orvane_test::ErrorOf([&] { line.Add("a", automation::ObjectPtr()); }).Number(), 13);
}

}  // namespace
}  // namespace suite
