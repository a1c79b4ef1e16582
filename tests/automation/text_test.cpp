#include "platform/base/text.hpp"

#include <gtest/gtest.h>

namespace {

TEST(TextTest, AsciiCaseLeavesOtherLettersAlone) {
  EXPECT_EQ(base::ToAsciiLower("AZ@[ \xC3\x84"), "az@[ \xC3\x84");
  EXPECT_EQ(base::ToAsciiUpper("az`{ \xC3\xA4"), "AZ`{ \xC3\xA4");
  EXPECT_TRUE(base::EqualsIgnoringAsciiCase("Q_Id", "q_iD"));
  EXPECT_FALSE(base::EqualsIgnoringAsciiCase("Q_ID", "Q_IDS"));
  EXPECT_FALSE(base::EqualsIgnoringAsciiCase("@", "`"));
  EXPECT_TRUE(base::LessIgnoringAsciiCase()("A", "b"));
  EXPECT_FALSE(base::LessIgnoringAsciiCase()("B", "b"));
}

TEST(TextTest, TrimsBothEndsOfTheCharactersAskedFor) {
  EXPECT_EQ(base::Trimmed(" \t\r\n a b\n "), "a b");
  EXPECT_EQ(base::Trimmed("\n a ", " "), "\n a");
  EXPECT_EQ(base::Trimmed(" \t"), "");
  EXPECT_EQ(base::Trimmed(""), "");
}

TEST(TextTest, ShowsControlCharacters) {
  EXPECT_EQ(base::WithControlsShown(std::string_view("a\0b\r\x1F\x7F\xC3\xA4", 8)),
            "a\\x00b\\x0D\\x1F\\x7F\xC3\xA4");
  EXPECT_TRUE(base::HasControl("a\tb"));
  EXPECT_FALSE(base::HasControl("a \xC2\x80"));
}

TEST(TextTest, MeasuresWellFormedCharactersOnly) {
  EXPECT_EQ(base::Utf8Length(""), 0u);
  EXPECT_EQ(base::Utf8Length("ab"), 1u);
  EXPECT_EQ(base::Utf8Length("\xC3\xA4"), 2u);
  EXPECT_EQ(base::Utf8Length("\xE6\x97\xA5x"), 3u);
  EXPECT_EQ(base::Utf8Length("\xF0\x9F\x98\x80"), 4u);
  // A later byte alone, overlong forms, a surrogate, past the last character, cut off.
  for (const char* text : {"\x80", "\xC0\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xF0\x8F\xBF\xBF",
                           "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF", "\xE6\x97", "\xC3"}) {
    EXPECT_EQ(base::Utf8Length(text), 0u) << testing::PrintToString(text);
  }
}

}  // namespace
