// orvane-host init and the demo's jobs with databases on a server.
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "platform/adodb/session/provider.hpp"
#include "tests/e2e/host_process.hpp"
#include "tests/servers/server_database.hpp"
#include "tests/support/temporary_folder.hpp"

namespace {

using orvane_test::Outcome;
using orvane_test::RunHost;
using orvane_test::ServerDatabase;

class InitServersTest : public testing::TestWithParam<const char*> {
 protected:
  Outcome Init(const std::vector<std::string>& more = {}) {
    std::vector<std::string> words{"init",       home_.string(),
                                   "--database", suite_.ConnectionString(),
                                   "--catalog",  catalogue_.ConnectionString()};
    words.insert(words.end(), more.begin(), more.end());
    return RunHost(words);
  }
  long Count(const std::string& from) {
    const auto session = suite_.Connect();
    const auto rows = session->Query("SELECT count(*) FROM " + from, {});
    return rows->Next() ? static_cast<long>(automation::ToInt64(rows->Value(0))) : -1;
  }

  ServerDatabase suite_{GetParam()};
  ServerDatabase catalogue_{GetParam()};
  orvane_test::TemporaryFolder folder_;
  const std::filesystem::path home_ = folder_.Path() / "home";
};

TEST_P(InitServersTest, MakesASuiteThatEveryJobRunsOn) {
  const Outcome made = Init({"--demo"});
  ASSERT_EQ(made.exitCode, 0) << made.err;
  EXPECT_FALSE(std::filesystem::exists(home_ / "db/orvane.sqlite"));
  EXPECT_EQ(Count("PROSPECT"), 10'000);

  const Outcome outcome = RunHost(
      {"run", "--strict", "--home", home_.string(), "DormantUserExpiry", "SolveOnNoResponse", "Archive"});
  // One customer of the demo has left no address.
  EXPECT_EQ(outcome.exitCode, 1) << outcome.out << outcome.err;
  EXPECT_TRUE(
      outcome.err.starts_with("warning: OrvaneProcess.SolveOnNoResponse: a mail was not taken: to \"\", "
                              "subject \"Reminder: we are waiting for your reply (1006)"))
      << outcome.err;
  EXPECT_EQ(outcome.err.find('\n'), outcome.err.size() - 1) << outcome.err;
  EXPECT_EQ(Count("PROSPECT"), 7'014);
  EXPECT_EQ(Count("QUESTIONS WHERE Q_STATUS = 160"), 5);
  EXPECT_EQ(Count("REMINDER WHERE R_STATUS = 150"), 12);
  EXPECT_EQ(Count("QUESTIONHISTORY"), 66);
  const auto mails = std::filesystem::directory_iterator(home_ / "mail/pickup");
  EXPECT_EQ(std::distance(begin(mails), end(mails)), 11);
}

TEST_P(InitServersTest, RefusesDatabasesThatHoldTablesAlready) {
  ASSERT_EQ(Init().exitCode, 0);
  std::filesystem::remove_all(home_);
  const Outcome second = Init();
  EXPECT_EQ(second.exitCode, 73);
  EXPECT_NE(second.err.find("the suite could not be made: "), std::string::npos) << second.err;
  EXPECT_FALSE(std::filesystem::exists(home_));
  EXPECT_EQ(Count("EMAIL"), 2);
}

INSTANTIATE_TEST_SUITE_P(Servers, InitServersTest, testing::Values("postgresql", "mariadb"),
                         [](const auto& server) { return std::string(server.param); });

}  // namespace
