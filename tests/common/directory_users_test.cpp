#include "common/directory_users.hpp"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "tests/doubles/fake_directory.hpp"
#include "tests/support/test_runtime.hpp"

namespace OrvaneUtilities {
namespace {

using Calls = std::vector<std::string>;

class DirectoryUsersTest : public testing::Test {
 protected:
  DirectoryUsersTest() {
    environment_.configuration->installDir = "C:\\suite";
    environment_.configuration->values = {{{"MEMBERSHIP", "MemScriptUser"}, "cn=orvane"},
                                          {{"MEMBERSHIP", "MemScriptCode"}, "secret"},
                                          {{"MEMBERSHIP", "LDAPRoot"}, "o=vendor"}};
    directory_->people["jdoe"] = {};
  }

  orvane_test::TestRuntime environment_;
  const std::shared_ptr<orvane_test::Directory> directory_ =
      orvane_test::RegisterFakeDirectory(environment_.runtime.classes);
};

TEST_F(DirectoryUsersTest, BindsWithTheAccountBelowTheRoot) {
  EXPECT_NE(getUserFromID("jdoe"), nullptr);
  EXPECT_EQ(directory_->calls, (Calls{"setServerInfo(C:\\suite\\config\\siteConfiguration.xml)",
                                      "BindAs(jdoe|cn=orvane,o=vendor|secret)"}));
  EXPECT_TRUE(environment_.log->empty());
}

TEST_F(DirectoryUsersTest, EmptyRootLeavesTheAccountNameAlone) {
  environment_.configuration->values[{"MEMBERSHIP", "LDAPRoot"}] = "";
  EXPECT_NE(getUserFromID("jdoe"), nullptr);
  EXPECT_EQ(directory_->calls.back(), "BindAs(jdoe|cn=orvane|secret)");
}

TEST_F(DirectoryUsersTest, LoadsTheSiteConfigurationFile) {
  getUserFromID("jdoe");
  EXPECT_EQ(environment_.configuration->loadedFiles,
            std::vector<std::string>{"C:\\suite\\config\\siteConfiguration.xml"});
}

TEST_F(DirectoryUsersTest, EveryCallReadsTheConfigurationAndBindsAnew) {
  const auto first = getUserFromID("jdoe");
  const auto second = getUserFromID("jdoe");
  EXPECT_NE(first, second);
  EXPECT_EQ(environment_.configuration->loadedFiles.size(), 2U);
  EXPECT_EQ(directory_->calls.size(), 4U);
}

TEST_F(DirectoryUsersTest, UnknownUserIsNullAndOneLogEntry) {
  EXPECT_EQ(getUserFromID("nobody"), nullptr);
  const orvane_test::LogEntry expected{
      "VnMembership.User", "OrvaneProcess.OrvaneUtilities.getUserFromID caught: no such user(1010).", 0};
  EXPECT_EQ(*environment_.log, std::vector{expected});
}

TEST_F(DirectoryUsersTest, IdThatLooksLikeAFilterIsPassedAsItIs) {
  getUserFromID("*)(uid=*");
  EXPECT_EQ(directory_->calls.back(), "BindAs(*)(uid=*|cn=orvane,o=vendor|secret)");
}

// Each step of the lookup, failing.
struct FailingStep {
  const char* name;
  const char* member;  // of the configuration or of the user
  Calls calls;         // of the user until then
  Calls log;
  friend void PrintTo(const FailingStep& step, std::ostream* out) { *out << step.name; }
};

class FailingLookupTest : public DirectoryUsersTest, public testing::WithParamInterface<FailingStep> {};

TEST_P(FailingLookupTest, IsNullAndLoggedAndRaisesNothing) {
  const auto fail = [](std::string_view member) {
    if (member == GetParam().member) throw automation::Error(70, "Injected", "Permission denied");
  };
  environment_.configuration->before = fail;
  directory_->before = fail;
  EXPECT_EQ(getUserFromID("jdoe"), nullptr);
  EXPECT_EQ(directory_->calls, GetParam().calls);
  Calls messages;
  for (const orvane_test::LogEntry& entry : *environment_.log) {
    EXPECT_EQ(entry.errorSource, "Injected");
    messages.push_back(entry.message);
  }
  EXPECT_EQ(messages, GetParam().log);
}

const char* const kLookupFailed =
    "OrvaneProcess.OrvaneUtilities.getUserFromID caught: Permission denied(70).";

INSTANTIATE_TEST_SUITE_P(
    Steps, FailingLookupTest,
    testing::Values(
        // The reader of the folder tells of its own failure as well.
        FailingStep{"InstallationFolder",
                    "getInstallDir",
                    {},
                    {"METHOD: \r\nOrvaneUtilities.GetInstallDirectory caught: Permission denied(70).",
                     kLookupFailed}},
        FailingStep{"ConfigurationFile", "LoadFile", {}, {kLookupFailed}},
        FailingStep{"ConfigurationValue", "GetValue", {}, {kLookupFailed}},
        FailingStep{"ServerInfo", "setServerInfo", {}, {kLookupFailed}},
        FailingStep{
            "Bind", "BindAs", {"setServerInfo(C:\\suite\\config\\siteConfiguration.xml)"}, {kLookupFailed}}),
    [](const auto& parameter) { return std::string(parameter.param.name); });

class MissingKeyTest : public DirectoryUsersTest, public testing::WithParamInterface<const char*> {};

TEST_P(MissingKeyTest, IsNullAndOneLogEntryThatNamesIt) {
  environment_.configuration->values.erase({"MEMBERSHIP", GetParam()});
  EXPECT_EQ(getUserFromID("jdoe"), nullptr);
  EXPECT_TRUE(directory_->calls.empty());
  ASSERT_EQ(environment_.log->size(), 1U);
  EXPECT_EQ(environment_.log->at(0).message,
            std::string("OrvaneProcess.OrvaneUtilities.getUserFromID caught: no value for MEMBERSHIP/") +
                GetParam() + "(1001).");
}

INSTANTIATE_TEST_SUITE_P(Keys, MissingKeyTest, testing::Values("MemScriptUser", "MemScriptCode", "LDAPRoot"),
                         [](const auto& parameter) { return std::string(parameter.param); });

TEST_F(DirectoryUsersTest, MissingUserComponentIsNullAndOneLogEntry) {
  orvane_test::TestRuntime bare;
  bare.configuration->values = environment_.configuration->values;
  EXPECT_EQ(getUserFromID("jdoe"), nullptr);
  ASSERT_EQ(bare.log->size(), 1U);
  EXPECT_EQ(
      bare.log->at(0).message,
      "OrvaneProcess.OrvaneUtilities.getUserFromID caught: ActiveX component can't create object(429).");
}

TEST_F(DirectoryUsersTest, BindingAgainstANamedFileRaisesWhatFails) {
  EXPECT_THROW(BindMembershipUser("D:\\other.xml", "nobody"), automation::Error);
  EXPECT_EQ(directory_->calls.front(), "setServerInfo(D:\\other.xml)");
  EXPECT_TRUE(environment_.log->empty());
}

}  // namespace
}  // namespace OrvaneUtilities
