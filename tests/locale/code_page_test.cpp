#include "platform/locale/code_page.hpp"

#include <gtest/gtest.h>

#include <string>

#include "platform/automation/error.hpp"

namespace orvane_test {
namespace {

using automation::CodePage;

TEST(CodePageTest, WritesAndReadsWindows1252) {
  const CodePage page("windows-1252");
  const std::string text = "M\xC3\xBCller \xE2\x82\xAC \xE2\x80\x9Cx\xE2\x80\x9D\r\n";
  EXPECT_EQ(page.FromUtf8(text), "M\xFCller \x80 \x93x\x94\r\n");
  EXPECT_EQ(page.ToUtf8("M\xFCller \x80 \x93x\x94\r\n"), text);
}

TEST(CodePageTest, WritesOneQuestionMarkForEachCharacterThatThePageLacks) {
  const CodePage page("windows-1252");
  EXPECT_EQ(page.FromUtf8("\xE6\x97\xA5\xE6\x9C\xAC \xF0\x9F\x98\x80!"), "?? ?!");
  EXPECT_EQ(page.FromUtf8("a\xFF"
                          "b"),
            "a?b");
}

TEST(CodePageTest, KeepsTheFirstFourControlCharactersThatHistoriesUse) {
  const CodePage page("windows-1252");
  EXPECT_EQ(page.FromUtf8("\x01\x02\x03\x04"), "\x01\x02\x03\x04");
  EXPECT_EQ(page.FromUtf8(std::string(1, '\0')), std::string(1, '\0'));
}

TEST(CodePageTest, WritesAPageWhoseLettersStandElsewhere) {
  const CodePage page("ibm-037");
  EXPECT_EQ(page.FromUtf8("Ab1"), "\xC1\x82\xF1");
  EXPECT_EQ(page.ToUtf8("\xC1\x82\xF1"), "Ab1");
}

TEST(CodePageTest, WritesPlainTextBeforeBetweenAndBehindOtherCharacters) {
  const CodePage page("windows-1252");
  EXPECT_EQ(page.FromUtf8("plain"), "plain");
  EXPECT_EQ(page.FromUtf8("a\xC3\xA4"
                          "b\xFF"
                          "c\xE6\x97\xA5"),
            "a\xE4"
            "b?c?");
  EXPECT_EQ(page.FromUtf8("\xC3\xA4 end"), "\xE4 end");
}

TEST(CodePageTest, GivesTheReplacementCharacterForUndefinedBytes) {
  const CodePage page("windows-1253");
  EXPECT_EQ(page.ToUtf8("\xE1\xD2"), "\xCE\xB1\xEF\xBF\xBD");
  EXPECT_EQ(page.FromUtf8("\xEF\xBF\xBD"), "?");
}

TEST(CodePageTest, ReadsAndWritesEveryByteOfThePageAlike) {
  const CodePage page("windows-1252");
  for (int byte = 0; byte < 256; ++byte) {
    const std::string bytes(1, static_cast<char>(byte));
    EXPECT_EQ(page.FromUtf8(page.ToUtf8(bytes)), bytes) << byte;
  }
}

TEST(CodePageTest, TakesSingleBytePagesOnly) {
  for (const char* name : {"", "no such page", "utf-8", "shift_jis", "utf-16"}) {
    try {
      const CodePage page(name);
      ADD_FAILURE() << name;
    } catch (const automation::Error& error) {
      EXPECT_EQ(error.Number(), 5);
      EXPECT_EQ(error.Description(), "\"" + std::string(name) + "\" is no single-byte code page");
    }
  }
}

}  // namespace
}  // namespace orvane_test
