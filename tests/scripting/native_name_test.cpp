#include "platform/scripting/local/native_name.hpp"

#include <gtest/gtest.h>

#include <random>
#include <set>
#include <string>

namespace orvane_test {
namespace {

using Scripting::local::NativeName;
using Scripting::local::ShownName;

TEST(NativeNameTest, LeavesValidUtf8Alone) {
  for (const char* name :
       {"a.txt", "gr\xC3\xBC\xC3\x9F", "\xE6\x97\xA5\xE6\x9C\xAC", "\xF0\x9F\x98\x80", "a:b", "*?"}) {
    EXPECT_EQ(ShownName(name), name);
    EXPECT_EQ(NativeName(name), name);
  }
}

TEST(NativeNameTest, ShowsABackslashAndBrokenUtf8AsPrivateUseCharacters) {
  EXPECT_EQ(ShownName("a\\b"),
            "a\xEF\x81\x9C"
            "b");
  EXPECT_EQ(ShownName("gr\xFC\xDF"), "gr\xEF\x83\xBC\xEF\x83\x9F");
  EXPECT_EQ(ShownName("\xC3"), "\xEF\x83\x83");
}

TEST(NativeNameTest, KeepsANameThatHoldsAStandInApartFromTheByteItStandsFor) {
  const std::string real =
      "a\xEF\x81\x9C"
      "b";
  EXPECT_NE(ShownName(real), ShownName("a\\b"));
  EXPECT_EQ(NativeName(ShownName(real)), real);
}

TEST(NativeNameTest, LeadsBackToTheSameBytesForAnyName) {
  std::mt19937 random(20040726);
  // Bytes that matter: separators, stand-in leads, continuation bytes, broken leads.
  const std::string bytes = "a\\:\xEF\x81\x9C\x80\x83\xBF\xC3\xED\xF4\xFF\xE6";
  std::uniform_int_distribution<std::size_t> pick(0, bytes.size() - 1);
  std::uniform_int_distribution<int> length(1, 9);
  std::set<std::string> natives;
  std::set<std::string> showns;
  for (int i = 0; i < 20'000; ++i) {
    std::string native;
    for (int n = length(random); n > 0; --n) native += bytes[pick(random)];
    const std::string shown = ShownName(native);
    ASSERT_EQ(NativeName(shown), native);
    ASSERT_EQ(shown.find('\\'), std::string::npos);
    natives.insert(native);
    showns.insert(shown);
  }
  EXPECT_EQ(natives.size(), showns.size());
}

TEST(NativeNameTest, NeverMakesASeparatorOrANulOfAStandIn) {
  // U+F02F and U+F000 would be "/" and NUL.
  EXPECT_EQ(NativeName("\xEF\x80\xAF\xEF\x80\x80"), "\xEF\x80\xAF\xEF\x80\x80");
}

}  // namespace
}  // namespace orvane_test
