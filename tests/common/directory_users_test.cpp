#include "common/directory_users.hpp"

#include <gtest/gtest.h>

#include "tests/support/test_runtime.hpp"

namespace OrvaneUtilities {
namespace {

using Calls = std::vector<std::string>;

class FakeUser : public VnMembership::User {
 public:
  explicit FakeUser(std::shared_ptr<Calls> calls) : calls_(std::move(calls)) {}

  void setServerInfo(std::string_view configurationFile) override {
    calls_->push_back("setServerInfo(" + std::string(configurationFile) + ")");
  }
  void BindAs(std::string_view userId, std::string_view bindName, std::string_view credential) override {
    calls_->push_back("BindAs(" + std::string(userId) + "|" + std::string(bindName) + "|" +
                      std::string(credential) + ")");
    if (userId == "nobody") throw automation::Error(1010, "VnMembership.User", "no such user");
  }
  std::int32_t LanguageID() const override { return 1033; }
  std::int32_t Locale() const override { return 1033; }
  std::string EMailAddress() const override { return {}; }
  std::string FirstName() const override { return {}; }
  std::string LastName() const override { return {}; }
  std::string CompanyName() const override { return {}; }
  std::string PhoneNumber() const override { return {}; }
  std::string Modem() const override { return {}; }
  std::string Country() const override { return {}; }
  std::string Position() const override { return {}; }
  std::string Fax() const override { return {}; }
  std::int32_t BusinessPartnerNumber() const override { return 0; }
  std::string EngineerCode() const override { return {}; }
  bool SalutationFlag() const override { return false; }

 private:
  std::shared_ptr<Calls> calls_;
};

class DirectoryUsersTest : public testing::Test {
 protected:
  DirectoryUsersTest() {
    environment_.configuration->installDir = "C:\\suite";
    environment_.configuration->values = {{{"MEMBERSHIP", "MemScriptUser"}, "cn=orvane"},
                                          {{"MEMBERSHIP", "MemScriptCode"}, "secret"},
                                          {{"MEMBERSHIP", "LDAPRoot"}, "o=vendor"}};
    environment_.runtime.classes.Register("VnMembership.User",
                                          [calls = calls_] { return std::make_shared<FakeUser>(calls); });
  }

  const std::shared_ptr<Calls> calls_ = std::make_shared<Calls>();
  orvane_test::TestRuntime environment_;
};

TEST_F(DirectoryUsersTest, BindsWithTheAccountBelowTheRoot) {
  EXPECT_NE(getUserFromID("jdoe"), nullptr);
  EXPECT_EQ(*calls_, (Calls{"setServerInfo(C:\\suite\\config\\siteConfiguration.xml)",
                            "BindAs(jdoe|cn=orvane,o=vendor|secret)"}));
  EXPECT_TRUE(environment_.log->empty());
}

TEST_F(DirectoryUsersTest, EmptyRootLeavesTheAccountNameAlone) {
  environment_.configuration->values[{"MEMBERSHIP", "LDAPRoot"}] = "";
  EXPECT_NE(getUserFromID("jdoe"), nullptr);
  EXPECT_EQ(calls_->back(), "BindAs(jdoe|cn=orvane|secret)");
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
  EXPECT_EQ(calls_->size(), 4U);
}

TEST_F(DirectoryUsersTest, UnknownUserIsNullAndOneLogEntry) {
  EXPECT_EQ(getUserFromID("nobody"), nullptr);
  const orvane_test::LogEntry expected{
      "VnMembership.User", "OrvaneProcess.OrvaneUtilities.getUserFromID caught: no such user(1010).", 0};
  EXPECT_EQ(*environment_.log, std::vector{expected});
}

TEST_F(DirectoryUsersTest, IdThatLooksLikeAFilterIsPassedAsItIs) {
  getUserFromID("*)(uid=*");
  EXPECT_EQ(calls_->back(), "BindAs(*)(uid=*|cn=orvane,o=vendor|secret)");
}

TEST_F(DirectoryUsersTest, MissingKeyIsNullAndOneLogEntry) {
  environment_.configuration->values.erase({"MEMBERSHIP", "MemScriptCode"});
  EXPECT_EQ(getUserFromID("jdoe"), nullptr);
  EXPECT_TRUE(calls_->empty());
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
  EXPECT_EQ(calls_->front(), "setServerInfo(D:\\other.xml)");
  EXPECT_TRUE(environment_.log->empty());
}

}  // namespace
}  // namespace OrvaneUtilities
