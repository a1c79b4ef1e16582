#include "common/directory_users.hpp"

#include <gtest/gtest.h>

#include "tests/support/fake_directory.hpp"
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

TEST_F(DirectoryUsersTest, MissingKeyIsNullAndOneLogEntry) {
  environment_.configuration->values.erase({"MEMBERSHIP", "MemScriptCode"});
  EXPECT_EQ(getUserFromID("jdoe"), nullptr);
  EXPECT_TRUE(directory_->calls.empty());
  ASSERT_EQ(environment_.log->size(), 1U);
  EXPECT_EQ(
      environment_.log->at(0).message,
      "OrvaneProcess.OrvaneUtilities.getUserFromID caught: no value for MEMBERSHIP/MemScriptCode(1001).");
}

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
