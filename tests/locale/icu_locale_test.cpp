#include "platform/locale/icu_locale.hpp"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace orvane_test {
namespace {

using automation::DateTime;
using automation::MakeLocale;

const DateTime kMoment =
    DateTime::FromParts({.year = 2004, .month = 7, .day = 6, .hour = 14, .minute = 5, .second = 3});

struct Customary {
  const char* locale;
  const char* separator;
  const char* shortDate;
};

class CustomaryDatesTest : public testing::TestWithParam<Customary> {};

TEST_P(CustomaryDatesTest, AreShownWithFourDigitsOfTheYearAndReadBack) {
  const auto locale = MakeLocale({.name = GetParam().locale});
  EXPECT_EQ(locale->DateSeparator(), GetParam().separator);
  EXPECT_EQ(locale->ShortDate(kMoment), GetParam().shortDate);
  EXPECT_EQ(locale->GeneralDate(kMoment), std::string(GetParam().shortDate) + " 14:05:03");
  EXPECT_EQ(locale->GeneralDate(kMoment.DatePart()), GetParam().shortDate);
  EXPECT_EQ(locale->ParseDateTime(locale->GeneralDate(kMoment)), kMoment);
}

INSTANTIATE_TEST_SUITE_P(
    Locales, CustomaryDatesTest,
    testing::Values(Customary{"", "/", "7/6/2004"}, Customary{"C", "/", "7/6/2004"},
                    Customary{"C.UTF-8", "/", "7/6/2004"}, Customary{"POSIX", "/", "7/6/2004"},
                    Customary{"qqq_AA", "/", "7/6/2004"}, Customary{"xx_YY", "/", "7/6/2004"},
                    Customary{"en_US.UTF-8", "/", "7/6/2004"}, Customary{"en_GB.UTF-8", "/", "06/07/2004"},
                    Customary{"de_DE.UTF-8", ".", "06.07.2004"},
                    Customary{"de_DE.ISO-8859-15@euro", ".", "06.07.2004"},
                    Customary{"nl_NL", "-", "06-07-2004"}, Customary{"sv_SE", "-", "2004-07-06"},
                    Customary{"ja_JP.UTF-8", "/", "2004/07/06"}, Customary{"hu_HU", ".", "2004.07.06"},
                    Customary{"bg_BG", ".", "6.07.2004"}, Customary{"fa_IR", "/", "2004/7/6"},
                    Customary{"th_TH", "/", "6/7/2004"}));

TEST(IcuLocaleTest, ShowsNoFractionsOfASecond) {
  const auto locale = MakeLocale({});
  const DateTime tick = DateTime::FromUnixMicroseconds(kMoment.UnixMicroseconds() + 999'999);
  EXPECT_EQ(locale->GeneralDate(tick), "7/6/2004 14:05:03");
  const DateTime afterMidnight =
      DateTime::FromUnixMicroseconds(kMoment.DatePart().UnixMicroseconds() + 500'000);
  EXPECT_EQ(locale->GeneralDate(afterMidnight), "7/6/2004");
}

TEST(IcuLocaleTest, ShowsDatesToUsersOfAWindowsLocale) {
  const auto locale = MakeLocale({.name = "sv_SE"});
  const std::vector<std::pair<int, std::vector<std::string>>> expected = {
      {1033, {"7/6/2004", "July 6, 2004", "7/6/2004 2:05:03 PM"}},
      {2057, {"06/07/2004", "6 July 2004", "06/07/2004 14:05:03"}},
      {1031, {"06.07.2004", "6. Juli 2004", "06.07.2004 14:05:03"}},
      {1043, {"06-07-2004", "6 juli 2004", "06-07-2004 14:05:03"}},
      {1041,
       {"2004/07/06",
        "2004\xE5\xB9\xB4"
        "7\xE6\x9C\x88"
        "6\xE6\x97\xA5",
        "2004/07/06 14:05:03"}},
      {1036, {"06/07/2004", "6 juillet 2004", "06/07/2004 14:05:03"}},
      {1040, {"06/07/2004", "6 luglio 2004", "06/07/2004 14:05:03"}},
      {1034, {"6/7/2004", "6 de julio de 2004", "6/7/2004 14:05:03"}},
  };
  for (const auto& [id, texts] : expected) {
    for (int style = 1; style <= 3; ++style) {
      EXPECT_EQ(locale->DateText(kMoment, style, id), texts[static_cast<std::size_t>(style - 1)])
          << id << " style " << style;
    }
  }
}

TEST(IcuLocaleTest, FallsBackToUnitedStatesEnglishAndTheShortDate) {
  const auto locale = MakeLocale({.name = "de_DE"});
  for (const std::int32_t id : {0, -1, 127, 1024, 2048, 99'999, 2'147'483'647}) {
    EXPECT_EQ(locale->DateText(kMoment, 3, id), "7/6/2004 2:05:03 PM") << id;
  }
  for (const int style : {0, -1, 4, 99})
    EXPECT_EQ(locale->DateText(kMoment, style, 1031), "06.07.2004") << style;
}

TEST(IcuLocaleTest, KnowsOnlyTheGregorianCalendar) {
  const auto locale = MakeLocale({});
  EXPECT_EQ(locale->DateText(DateTime::FromDate(1500, 3, 1), 1, 1033), "3/1/1500");
  EXPECT_EQ(locale->DateText(DateTime::FromDate(100, 1, 1), 1, 1033), "1/1/0100");
  EXPECT_EQ(locale->DateText(DateTime::FromDate(9999, 12, 31), 2, 1033), "December 31, 9999");
}

TEST(IcuLocaleTest, ChangesCaseByUnicodeRules) {
  const auto locale = MakeLocale({});
  EXPECT_EQ(locale->ToLower("A\xC3\x84\xCE\xA9\xD0\x96"), "a\xC3\xA4\xCF\x89\xD0\xB6");
  EXPECT_EQ(locale->ToUpper("a\xC3\xA4\xCF\x89\xD0\xB6"), "A\xC3\x84\xCE\xA9\xD0\x96");
}

TEST(IcuLocaleTest, DoesNotFollowTheLocaleInItsCaseRules) {
  EXPECT_EQ(MakeLocale({.name = "tr_TR"})->ToLower("TITLE"), "title");
}

TEST(IcuLocaleTest, WritesTheCodePageThatItIsGiven) {
  EXPECT_EQ(MakeLocale({})->ToCodePage("\xC3\xA4\xE2\x82\xAC"), "\xE4\x80");
  EXPECT_EQ(MakeLocale({.name = {}, .codePage = "windows-1251"})->ToCodePage("\xD0\x96"), "\xC6");
  EXPECT_EQ(MakeLocale({})->FromCodePage("\xE4"), "\xC3\xA4");
}

TEST(IcuLocaleTest, ServesManyThreads) {
  const auto locale = MakeLocale({});
  std::vector<std::thread> threads;
  std::vector<int> wrong(4);
  for (std::size_t i = 0; i < wrong.size(); ++i) {
    threads.emplace_back([&locale, &count = wrong[i], i] {
      const std::int32_t id = i % 2 == 0 ? 1031 : 1036;
      const std::string expected = i % 2 == 0 ? "6. Juli 2004" : "6 juillet 2004";
      for (int n = 0; n < 500; ++n) count += locale->DateText(kMoment, 2, id) == expected ? 0 : 1;
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, std::vector<int>(4, 0));
}

class EnvironmentTest : public testing::Test {
 protected:
  EnvironmentTest() {
    for (const char* name : kNames) {
      const char* value = getenv(name);
      saved_.emplace_back(name, value == nullptr ? "" : value);
      unsetenv(name);
    }
  }
  ~EnvironmentTest() override {
    for (const auto& [name, value] : saved_) {
      value.empty() ? unsetenv(name.c_str()) : setenv(name.c_str(), value.c_str(), 1);
    }
  }

 private:
  static constexpr const char* kNames[] = {"LC_ALL", "LC_TIME", "LANG"};
  std::vector<std::pair<std::string, std::string>> saved_;
};

TEST_F(EnvironmentTest, NamesTheLocaleInTheUsualOrder) {
  EXPECT_EQ(automation::LocaleNameFromEnvironment(), "");
  setenv("LANG", "de_DE.UTF-8", 1);
  EXPECT_EQ(automation::LocaleNameFromEnvironment(), "de_DE.UTF-8");
  setenv("LC_TIME", "nl_NL", 1);
  EXPECT_EQ(automation::LocaleNameFromEnvironment(), "nl_NL");
  setenv("LC_ALL", "C", 1);
  EXPECT_EQ(automation::LocaleNameFromEnvironment(), "C");
  setenv("LC_ALL", "", 1);
  EXPECT_EQ(automation::LocaleNameFromEnvironment(), "nl_NL") << "an empty variable counts as unset";
}

}  // namespace
}  // namespace orvane_test
