#include "host/arguments.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/command_table.hpp"

namespace {

using orvane::host::Arguments;
using orvane::host::ParseArguments;
using orvane::host::UsageError;

std::string Refusal(const std::vector<std::string>& words, const char* environmentHome = nullptr) {
  try {
    ParseArguments(words, environmentHome);
  } catch (const UsageError& error) {
    return error.what();
  }
  return "accepted";
}

TEST(ArgumentsTest, RunTakesSeveralJobsInTheirOrder) {
  const Arguments arguments =
      ParseArguments({"run", "--home", "/h", "Archive", "--strict", "CleanUp"}, nullptr);
  EXPECT_EQ(arguments.command->name, "run");
  EXPECT_EQ(arguments.home, "/h");
  EXPECT_EQ(arguments.jobs, (std::vector<std::string>{"Archive", "CleanUp"}));
  EXPECT_TRUE(arguments.strict);
}

TEST(ArgumentsTest, RunWaitsWithoutLimitUnlessItIsTold) {
  const auto wait = [](const std::vector<std::string>& more) {
    std::vector<std::string> words{"run", "--home", "/suite", "Archive"};
    words.insert(words.end(), more.begin(), more.end());
    return ParseArguments(words, nullptr).wait;
  };
  EXPECT_EQ(wait({}), std::nullopt);
  EXPECT_EQ(wait({"--wait", "90"}), std::chrono::seconds(90));
  EXPECT_EQ(wait({"--wait=0"}), std::chrono::seconds(0));
  EXPECT_EQ(wait({"--no-wait"}), std::chrono::seconds(0));
}

TEST(ArgumentsTest, RunAsksTheServicesUnlessItIsTold) {
  EXPECT_TRUE(ParseArguments({"run", "--home", "/h", "Archive"}, nullptr).preflight);
  EXPECT_FALSE(ParseArguments({"run", "--home", "/h", "--no-preflight", "Archive"}, nullptr).preflight);
}

TEST(ArgumentsTest, RunTakesWhatIsKeptAndToldOfIt) {
  using orvane::JournalLevel;
  using orvane::host::ShowProgress;
  const auto run = [](const std::vector<std::string>& more) {
    std::vector<std::string> words{"run", "--home", "/h", "Archive"};
    words.insert(words.end(), more.begin(), more.end());
    return ParseArguments(words, nullptr);
  };
  EXPECT_EQ(run({}).journal, std::nullopt) << "as the job's journals usually are";
  EXPECT_EQ(run({"--journal", "keys"}).journal, JournalLevel::Keys);
  EXPECT_EQ(run({"--journal=rows"}).journal, JournalLevel::Rows);
  EXPECT_EQ(run({"--journal", "off"}).journal, JournalLevel::Off);
  EXPECT_EQ(run({}).progress, ShowProgress::Auto);
  EXPECT_EQ(run({"--progress", "auto"}).progress, ShowProgress::Auto);
  EXPECT_EQ(run({"--progress=always"}).progress, ShowProgress::Always);
  EXPECT_EQ(run({"--progress", "never"}).progress, ShowProgress::Never);
  EXPECT_FALSE(run({}).limit);
  EXPECT_EQ(run({"--limit", "500"}).limit->count, 500U);
  EXPECT_EQ(run({"--limit=2.5%"}).limit->percent, 2.5);
}

TEST(ArgumentsTest, PreviewTakesAMomentAndAForm) {
  const Arguments arguments = ParseArguments(
      {"preview", "--home", "/h", "--at", "2026-02-28 23:59:59", "--json", "Archive", "CleanUp"}, nullptr);
  EXPECT_EQ(arguments.command->name, "preview");
  EXPECT_EQ(arguments.at, automation::DateTime::FromParts(
                              {.year = 2026, .month = 2, .day = 28, .hour = 23, .minute = 59, .second = 59}));
  EXPECT_TRUE(arguments.json);
  EXPECT_EQ(arguments.jobs, (std::vector<std::string>{"Archive", "CleanUp"}));
  const Arguments plain = ParseArguments({"preview", "--home", "/h", "Archive"}, nullptr);
  EXPECT_FALSE(plain.at);
  EXPECT_FALSE(plain.json);
  EXPECT_EQ(Refusal({"preview", "--home", "/h"}),
            "preview needs the name of at least one job; \"orvane-host list\" shows them");
}

// Each option that takes a value: what it says of one that it does not take, which must name all three.
struct BadValue {
  const char* command;
  const char* option;
  const char* value;
  const char* allowed;
};

class BadValueTest : public testing::TestWithParam<BadValue> {};

TEST_P(BadValueTest, NamesTheOptionTheValueAndWhatIsAllowed) {
  const BadValue& bad = GetParam();
  const std::string option = std::string("--") + bad.option;
  const std::string expected = option + " takes " + bad.allowed + ", not \"" + bad.value + "\"";
  EXPECT_EQ(Refusal({bad.command, "--home", "/h", option, bad.value, "Archive"}), expected);
  EXPECT_EQ(Refusal({bad.command, "--home", "/h", option + "=" + bad.value, "Archive"}), expected);
}

INSTANTIATE_TEST_SUITE_P(
    Options, BadValueTest,
    testing::Values(
        BadValue{"run", "wait", "", "a number of seconds"},
        BadValue{"run", "wait", "soon", "a number of seconds"},
        BadValue{"run", "wait", "-1", "a number of seconds"},
        BadValue{"run", "wait", "1.5", "a number of seconds"},
        BadValue{"run", "wait", "4294967296", "a number of seconds"},
        BadValue{"run", "limit", "", "a number, or a share from 0% to 100%"},
        BadValue{"run", "limit", "many", "a number, or a share from 0% to 100%"},
        BadValue{"run", "limit", "-5", "a number, or a share from 0% to 100%"},
        BadValue{"run", "limit", "101%", "a number, or a share from 0% to 100%"},
        BadValue{"run", "limit", "5 %", "a number, or a share from 0% to 100%"},
        BadValue{"run", "journal", "", "one of keys, rows, off"},
        BadValue{"run", "journal", "all", "one of keys, rows, off"},
        BadValue{"run", "journal", "Rows", "one of keys, rows, off"},
        BadValue{"run", "progress", "", "one of auto, always, never"},
        BadValue{"run", "progress", "yes", "one of auto, always, never"},
        BadValue{"preview", "at", "", "a moment such as \"2026-11-22 02:00:00\""},
        BadValue{"preview", "at", "tonight", "a moment such as \"2026-11-22 02:00:00\""},
        BadValue{"preview", "at", "2026-11-22", "a moment such as \"2026-11-22 02:00:00\""},
        BadValue{"preview", "at", "2026-02-29 02:00:00", "a moment such as \"2026-11-22 02:00:00\""},
        BadValue{"preview", "at", "2026-11-22 24:00:00", "a moment such as \"2026-11-22 02:00:00\""},
        BadValue{"preview", "at", "0000-11-22 02:00:00", "a moment such as \"2026-11-22 02:00:00\""},
        BadValue{"preview", "at", "2026-11-22 02:00:00Z", "a moment such as \"2026-11-22 02:00:00\""}));

TEST(ArgumentsTest, OptionsBelongToTheirCommands) {
  for (const char* option :
       {"--limit", "--journal", "--progress", "--wait", "--no-wait", "--no-preflight", "--strict"}) {
    EXPECT_EQ(Refusal({"preview", "--home", "/h", "Archive", option}),
              std::string("unknown option ") + option + " of preview");
  }
  for (const char* option : {"--at", "--json"}) {
    EXPECT_EQ(Refusal({"run", "--home", "/h", "Archive", option}),
              std::string("unknown option ") + option + " of run");
  }
  for (const char* option : {"--limit", "--journal", "--progress", "--wait"}) {
    EXPECT_EQ(Refusal({"run", "--home", "/h", "Archive", option}), std::string(option) + " needs a value");
  }
  EXPECT_EQ(Refusal({"preview", "--home", "/h", "Archive", "--at"}), "--at needs a value");
  EXPECT_EQ(Refusal({"run", "--home", "/h", "Archive", "--no-preflight=1"}), "--no-preflight takes no value");
}

TEST(ArgumentsTest, StatusTakesAnAgeInHours) {
  const Arguments arguments =
      ParseArguments({"status", "--home", "/h", "--max-age", "26", "--json", "Archive"}, nullptr);
  EXPECT_EQ(arguments.maxAge, std::chrono::hours(26));
  EXPECT_TRUE(arguments.json);
  EXPECT_EQ(arguments.jobs, std::vector<std::string>{"Archive"});
  EXPECT_EQ(Refusal({"status", "--max-age", "a day"}, "/h"),
            "--max-age takes a number of hours, not \"a day\"");
}

TEST(ArgumentsTest, AnOptionsValueMayFollowAnEqualsSign) {
  EXPECT_EQ(ParseArguments({"run", "--home=/h i", "Archive"}, nullptr).home, "/h i");
}

TEST(ArgumentsTest, TheEnvironmentGivesTheHomeThatTheCommandLineDoesNot) {
  EXPECT_EQ(ParseArguments({"status"}, "/env").home, "/env");
  EXPECT_EQ(ParseArguments({"status", "--home", "/h"}, "/env").home, "/h");
  EXPECT_EQ(Refusal({"run", "Archive"}), "no installation directory: give --home HOME or set ORVANE_HOME");
  EXPECT_EQ(Refusal({"status"}, ""), "no installation directory: give --home HOME or set ORVANE_HOME");
}

TEST(ArgumentsTest, InitTakesOneDirectory) {
  const Arguments arguments = ParseArguments({"init", "/new", "--demo"}, "/env");
  EXPECT_EQ(arguments.command->name, "init");
  EXPECT_EQ(arguments.home, "/new");
  EXPECT_TRUE(arguments.demo);
  EXPECT_EQ(Refusal({"init"}, "/env"), "init needs the directory to make the suite in");
  EXPECT_EQ(Refusal({"init", "a", "b"}), "init takes one directory, not also b");
}

TEST(ArgumentsTest, InitTakesBothDatabasesOrNone) {
  const Arguments arguments =
      ParseArguments({"init", "/new", "--database", "DSN=a;x=y", "--catalog", "DSN=b"}, nullptr);
  EXPECT_EQ(arguments.database, "DSN=a;x=y");
  EXPECT_EQ(arguments.catalogue, "DSN=b");
  EXPECT_EQ(Refusal({"init", "/new", "--database", "DSN=a"}), "--database and --catalog go together");
}

TEST(ArgumentsTest, RefusesWhatItDoesNotKnow) {
  EXPECT_EQ(Refusal({}), "no command");
  EXPECT_EQ(Refusal({"start"}), "unknown command start");
  EXPECT_EQ(Refusal({"run", "--home", "/h"}),
            "run needs the name of at least one job; \"orvane-host list\" shows them");
  EXPECT_EQ(Refusal({"run", "--home", "/h", "--force", "Archive"}), "unknown option --force of run");
  EXPECT_EQ(Refusal({"run", "--home", "/h", "-f", "Archive"}), "unknown option -f of run");
  EXPECT_EQ(Refusal({"run", "Archive", "--home"}), "--home needs a value");
  EXPECT_EQ(Refusal({"run", "--home", "/h", "--strict=yes", "Archive"}), "--strict takes no value");
  EXPECT_EQ(Refusal({"run", "--home", "/h", "Archive", "--wait", "-1"}),
            "--wait takes a number of seconds, not \"-1\"");
  EXPECT_EQ(Refusal({"run", "--home", "/h", "Archive", "--wait", "1", "--no-wait"}),
            "--wait and --no-wait exclude each other");
  EXPECT_EQ(Refusal({"list", "all"}), "list takes no arguments, all neither");
}

TEST(ArgumentsTest, SaysWhatWasProbablyMeant) {
  EXPECT_EQ(Refusal({"statsu"}), "unknown command statsu; did you mean status?");
  EXPECT_EQ(Refusal({"run", "--home", "/h", "--stirct", "Archive"}),
            "unknown option --stirct of run; did you mean --strict?");
}

TEST(ArgumentsTest, TakesOptionsByTheirFullNamesOnly) {
  EXPECT_EQ(Refusal({"run", "--home", "/h", "--str", "Archive"}), "unknown option --str of run");
  EXPECT_EQ(Refusal({"run", "--home", "/h", "--no-wai", "Archive"}),
            "unknown option --no-wai of run; did you mean --no-wait?");
}

TEST(ArgumentsTest, WordsBehindTwoDashesAreNoOptions) {
  EXPECT_EQ(ParseArguments({"run", "--home", "/h", "--", "--strict"}, nullptr).jobs,
            std::vector<std::string>{"--strict"});
}

TEST(ArgumentsTest, HelpIsUnderstoodEverywhere) {
  EXPECT_EQ(ParseArguments({"--help"}, nullptr).command->name, "help");
  EXPECT_EQ(ParseArguments({"help"}, nullptr).command->name, "help");
  EXPECT_EQ(ParseArguments({"help"}, nullptr).about, nullptr);
  for (const std::vector<std::string>& words :
       {std::vector<std::string>{"run", "--help"}, {"run", "Archive", "-h"}, {"help", "run"}}) {
    const Arguments arguments = ParseArguments(words, nullptr);
    EXPECT_EQ(arguments.command->name, "help") << words.back();
    ASSERT_NE(arguments.about, nullptr) << words.back();
    EXPECT_EQ(arguments.about->name, "run") << words.back();
  }
  EXPECT_EQ(ParseArguments({"--version"}, nullptr).command->name, "--version");
}

}  // namespace
