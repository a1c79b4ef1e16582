#include "run/preflight/preflight.hpp"

#include <gmock/gmock.h>

#include <array>

#include "components/interfaces/user.hpp"
#include "components/registration/register_jobs.hpp"
#include "platform/automation/error.hpp"
#include "tests/doubles/fake_directory.hpp"
#include "tests/support/raised_error.hpp"
#include "tests/support/test_runtime.hpp"

namespace {

using OrvaneProcess::kArchiveProgId;
using OrvaneProcess::kCleanUpProgId;
using OrvaneProcess::kDormantUserExpiryProgId;
using OrvaneProcess::kSolveOnNoResponseProgId;
using testing::ElementsAre;
using testing::IsEmpty;
using Strings = std::vector<std::string>;

class PreflightTest : public testing::Test {
 protected:
  // The refusals as "job, service: reason".
  Strings Ask(const std::vector<std::string_view>& progIds) {
    asked_.clear();
    Strings told;
    for (const auto& [progId, service, reason] :
         orvane_preflight::Ask(progIds, {.directory = [this] { Answer("directory", directory_); },
                                        .mail = [this] { Answer("mail", mail_); }})) {
      told.push_back(std::string(progId) + ", " + std::string(service) + ": " + reason);
    }
    return told;
  }

  std::string directory_;  // why it refuses; empty: it does not
  std::string mail_;
  Strings asked_;

 private:
  void Answer(const std::string& service, const std::string& refusal) {
    asked_.push_back(service);
    if (!refusal.empty()) throw automation::Error(1, "test", refusal);
  }
};

TEST_F(PreflightTest, AsksForWhatTheJobsNeed) {
  EXPECT_THAT(Ask({kDormantUserExpiryProgId, kCleanUpProgId}), IsEmpty());
  EXPECT_THAT(asked_, IsEmpty());
  EXPECT_THAT(Ask({kArchiveProgId}), IsEmpty());
  EXPECT_THAT(asked_, ElementsAre("directory"));
  EXPECT_THAT(Ask({kSolveOnNoResponseProgId}), IsEmpty());
  EXPECT_THAT(asked_, ElementsAre("directory", "mail"));
}

TEST_F(PreflightTest, AsksEachServiceOnce) {
  Ask({kArchiveProgId, kSolveOnNoResponseProgId, kArchiveProgId});
  EXPECT_THAT(asked_, ElementsAre("directory", "mail"));
}

TEST_F(PreflightTest, TellsEveryServiceThatRefuses) {
  directory_ = "down";
  mail_ = "full";
  EXPECT_THAT(Ask({kCleanUpProgId, kSolveOnNoResponseProgId}),
              ElementsAre("OrvaneProcess.SolveOnNoResponse, the membership directory: down",
                          "OrvaneProcess.SolveOnNoResponse, the mail transport: full"));
  EXPECT_THAT(Ask({kArchiveProgId}), ElementsAre("OrvaneProcess.Archive, the membership directory: down"));
}

TEST(ProbeDirectoryTest, LooksSomebodyUpWithTheAccountOfTheSite) {
  orvane_test::TestRuntime test;
  test.configuration->values = {{{"MEMBERSHIP", "MemScriptUser"}, "cn=orvane"},
                                {{"MEMBERSHIP", "MemScriptCode"}, "secret"},
                                {{"MEMBERSHIP", "LDAPRoot"}, "dc=site"}};
  const auto directory = orvane_test::RegisterFakeDirectory(test.runtime.classes);
  directory->people["orvane-host.preflight"] = {};
  EXPECT_NO_THROW(orvane_preflight::ProbeDirectory());
  EXPECT_THAT(directory->calls, ElementsAre("setServerInfo(/suite/home\\config\\siteConfiguration.xml)",
                                            "BindAs(orvane-host.preflight|cn=orvane,dc=site|secret)"));
  int answer = VnMembership::kUnknownUser;
  directory->before = [&answer](std::string_view) {
    throw automation::Error(answer, "VnMembership.User", "as told");
  };
  EXPECT_NO_THROW(orvane_preflight::ProbeDirectory());
  answer = VnMembership::kAccountRefused;
  EXPECT_EQ(orvane_test::ErrorOf(&orvane_preflight::ProbeDirectory).Number(), VnMembership::kAccountRefused);
  EXPECT_THAT(*test.log, IsEmpty());
}

}  // namespace
