// orvane-host init for an account of its own, and with passwords that nobody else sees.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/e2e/hand_made_suite.hpp"
#include "tests/e2e/host_process.hpp"

namespace {

namespace fs = std::filesystem;
using orvane_test::kUnprivilegedId;
using orvane_test::Outcome;
using orvane_test::RunHost;
using orvane_test::RunHostUnprivileged;
using orvane_test::TemporaryFolder;
using testing::HasSubstr;

constexpr const char* kAccount = "nobody";  // whose number is kUnprivilegedId

struct stat StatusOf(const fs::path& path) {
  struct stat status {};
  EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
  return status;
}

class InitOwnerTest : public testing::Test {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "only root may give files away";
    // The account has to reach the place.
    ASSERT_EQ(chmod(folder_.Path().c_str(), 0755), 0);
  }

  TemporaryFolder folder_;
  const fs::path home_ = folder_.Path() / "home";
  const fs::path logs_ = folder_.Path() / "OrvLog";
};

TEST_F(InitOwnerTest, MakesASuiteThatTheAccountRunsJobsOn) {
  const Outcome made = RunHost({"init", home_.string(), "--demo", "--owner", kAccount});
  ASSERT_EQ(made.exitCode, 0) << made.err;
  EXPECT_EQ(RunHostUnprivileged({"check", "--home", home_.string()}).exitCode, 0);
  const Outcome run = RunHostUnprivileged({"run", "--home", home_.string(), "--limit", "100%",
                                           "DormantUserExpiry", "CleanUp", "Archive", "SolveOnNoResponse"});
  EXPECT_EQ(run.exitCode, 0) << run.out << run.err;
}

TEST_F(InitOwnerTest, EverythingIsTheAccountsAndNobodyElseMayRead) {
  ASSERT_EQ(RunHost({"init", home_.string(), "--demo", "--owner", kAccount}).exitCode, 0);
  std::vector<fs::path> paths{home_, logs_};
  for (const auto& entry : fs::recursive_directory_iterator(home_)) paths.push_back(entry.path());
  for (const fs::path& path : paths) {
    const struct stat status = StatusOf(path);
    EXPECT_EQ(status.st_uid, kUnprivilegedId) << path;
    EXPECT_EQ(status.st_gid, kUnprivilegedId) << path;
    const bool isConfiguration = path.filename() == "siteConfiguration.xml";
    EXPECT_EQ(status.st_mode & 07777U, S_ISDIR(status.st_mode) ? 0750U
                                       : isConfiguration       ? 0600U
                                                               : 0640U)
        << path;
  }
}

TEST_F(InitOwnerTest, ALogFolderThatWasThereStaysAsItIs) {
  ASSERT_TRUE(fs::create_directory(logs_));
  ASSERT_EQ(chmod(logs_.c_str(), 0700), 0);
  ASSERT_EQ(RunHost({"init", home_.string(), "--owner", kAccount}).exitCode, 0);
  EXPECT_EQ(StatusOf(logs_).st_uid, 0U);
  EXPECT_EQ(StatusOf(logs_).st_mode & 07777U, 0700U);
}

TEST_F(InitOwnerTest, AnUnknownAccountIsAnErrorInTheCall) {
  const Outcome outcome = RunHost({"init", home_.string(), "--owner", "no-such-account"});
  EXPECT_EQ(outcome.exitCode, 64);
  EXPECT_THAT(outcome.err, HasSubstr("no account \"no-such-account\" on this machine"));
  EXPECT_FALSE(fs::exists(home_));
}

TEST_F(InitOwnerTest, WhoMayNotGiveFilesAwayLeavesNothingBehind) {
  ASSERT_EQ(chmod(folder_.Path().c_str(), 0777), 0);
  const Outcome outcome = RunHostUnprivileged({"init", home_.string(), "--owner", "root"});
  EXPECT_EQ(outcome.exitCode, 73);
  EXPECT_THAT(outcome.err, HasSubstr("cannot be given to the account"));
  EXPECT_FALSE(fs::exists(home_));
  EXPECT_FALSE(fs::exists(logs_));
}

TEST_F(InitOwnerTest, TheAccountReachesAPlaceThatHadToBeMade) {
  const fs::path home = folder_.Path() / "srv/orvane/home";
  ASSERT_EQ(RunHost({"init", home.string(), "--owner", kAccount}).exitCode, 0);
  const Outcome run = RunHostUnprivileged({"run", "--home", home.string(), "DormantUserExpiry"});
  EXPECT_EQ(run.exitCode, 0) << run.err;
}

// Whoever may write beside the place could have put the link there.
TEST_F(InitOwnerTest, WhereALinkLeadsIsNotGivenAway) {
  const fs::path elsewhere = folder_.Path() / "elsewhere";
  ASSERT_TRUE(fs::create_directory(elsewhere));
  fs::create_symlink(elsewhere, home_);
  const Outcome outcome = RunHost({"init", home_.string(), "--owner", kAccount});
  EXPECT_EQ(outcome.exitCode, 73);
  EXPECT_TRUE(fs::is_empty(elsewhere));
  EXPECT_EQ(StatusOf(elsewhere).st_uid, 0U);
  EXPECT_FALSE(fs::exists(logs_));
}

// What root alone may change, a suite for the account does not change.
TEST_F(InitOwnerTest, TheSuiteIsMadeWithTheAccountsRights) {
  const fs::path own = folder_.Path() / "roots";
  ASSERT_TRUE(fs::create_directory(own));
  const std::string database = "Provider=SQLite;Mode=ReadWriteCreate;Data Source=" + own.string();
  const Outcome outcome = RunHost({"init", home_.string(), "--owner", kAccount, "--database",
                                   database + "/suite.sqlite", "--catalog", database + "/catalogue.sqlite"});
  EXPECT_EQ(outcome.exitCode, 73);
  EXPECT_TRUE(fs::is_empty(own));
  EXPECT_FALSE(fs::exists(home_));
  EXPECT_FALSE(fs::exists(logs_));
}

class InitConnectionsTest : public testing::Test {
 protected:
  Outcome Init(const std::vector<std::string>& words) {
    std::vector<std::string> all{"init", home_.string()};
    all.insert(all.end(), words.begin(), words.end());
    return RunHost(all);
  }

  TemporaryFolder folder_;
  const fs::path home_ = folder_.Path() / "home";
  const std::string database_ =
      "Provider=SQLite;Data Source=" + (folder_.Path() / "own.sqlite").string() + ";Mode=ReadWriteCreate";
  const std::string catalogue_ =
      "Provider=SQLite;Data Source=" + (folder_.Path() / "catalogue.sqlite").string() +
      ";Mode=ReadWriteCreate";
};

TEST_F(InitConnectionsTest, ComeFromAFile) {
  const fs::path file = folder_.Write("connections", database_ + "\r\n\n" + catalogue_ + "\n");
  const Outcome outcome = Init({"--connections-from", file.string()});
  ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
  const std::string site = TemporaryFolder::Read(home_ / "config/siteConfiguration.xml");
  EXPECT_THAT(site, HasSubstr("<connection name=\"Orvane\">" + database_ + "</connection>"));
  EXPECT_THAT(site, HasSubstr("<connection name=\"ECatalog\">" + catalogue_ + "</connection>"));
  EXPECT_TRUE(fs::exists(folder_.Path() / "catalogue.sqlite"));
}

TEST_F(InitConnectionsTest, ComeFromStandardInput) {
  const fs::path file = folder_.Write("connections", database_ + "\n" + catalogue_);
  const std::string call = std::string(ORVANE_HOST_BINARY) + " init " + home_.string() +
                           " --connections-from - < " + file.string() + " > /dev/null";
  ASSERT_EQ(std::system(call.c_str()), 0);
  EXPECT_THAT(TemporaryFolder::Read(home_ / "config/siteConfiguration.xml"), HasSubstr(catalogue_));
}

TEST_F(InitConnectionsTest, AreTwoLines) {
  for (const std::string& text : {std::string(), database_, database_ + "\n\n", database_ + "\na\nb\n"}) {
    const fs::path file = folder_.Write("connections", text);
    const Outcome outcome = Init({"--connections-from", file.string()});
    EXPECT_EQ(outcome.exitCode, 64) << text;
    EXPECT_THAT(outcome.err, HasSubstr("--connections-from takes two lines"));
    EXPECT_THAT(outcome.err, testing::Not(HasSubstr("Provider"))) << "a password may stand there";
    EXPECT_FALSE(fs::exists(home_));
  }
  EXPECT_EQ(Init({"--connections-from", (folder_.Path() / "none").string()}).exitCode, 64);
  EXPECT_EQ(Init({"--connections-from", "-", "--database", "a", "--catalog", "b"}).exitCode, 64);
}

}  // namespace
