#include "host/arguments.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using orvane_host::Arguments;
using orvane_host::Command;
using orvane_host::ParseArguments;
using orvane_host::UsageError;

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
  EXPECT_EQ(arguments.command, Command::Run);
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
  EXPECT_EQ(arguments.command, Command::Init);
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
  EXPECT_EQ(Refusal({"run", "--home", "/h"}), "run needs the name of at least one job");
  EXPECT_EQ(Refusal({"run", "--home", "/h", "--force", "Archive"}), "unknown option --force of run");
  EXPECT_EQ(Refusal({"run", "Archive", "--home"}), "--home needs a value");
  EXPECT_EQ(Refusal({"run", "--home", "/h", "Archive", "--wait", "-1"}),
            "--wait takes a number of seconds, not \"-1\"");
  EXPECT_EQ(Refusal({"run", "--home", "/h", "Archive", "--wait", "1", "--no-wait"}),
            "--wait and --no-wait exclude each other");
  EXPECT_EQ(Refusal({"list", "all"}), "list takes no arguments");
  EXPECT_EQ(Refusal({"status", "Archive"}, "/h"), "status takes no Archive");
}

TEST(ArgumentsTest, HelpIsUnderstoodEverywhere) {
  EXPECT_EQ(ParseArguments({"--help"}, nullptr).command, Command::Help);
  EXPECT_EQ(ParseArguments({"run", "--help"}, nullptr).command, Command::Help);
  EXPECT_EQ(ParseArguments({"help"}, nullptr).command, Command::Help);
  EXPECT_EQ(ParseArguments({"--version"}, nullptr).command, Command::Version);
}

}  // namespace
