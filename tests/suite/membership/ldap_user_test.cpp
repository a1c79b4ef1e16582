// VnMembership.User on a real LDAP server.
#include <gtest/gtest.h>

#include <string>

#include "components/interfaces/user.hpp"
#include "platform/automation/runtime.hpp"
#include "suite/membership/directory.hpp"
#include "suite/membership/ldap_directory.hpp"
#include "suite/membership/user.hpp"
#include "tests/servers/server_state.hpp"
#include "tests/support/temporary_folder.hpp"

namespace {

class LdapUserTest : public testing::Test {
 protected:
  LdapUserTest() : scope_(runtime_) {
    VnMembership::RegisterUser(runtime_.classes);
    Configure(server_.Setting("url"));
  }

  void Configure(const std::string& url, const std::string& root = "dc=site", const std::string& more = "") {
    folder_.Write("siteConfiguration.xml",
                  "<siteConfiguration><section name=\"MEMBERSHIP\"><key name=\"LDAPRoot\">" + root +
                      "</key><key name=\"LDAPServer\">" + url + "</key>" + more +
                      "</section></siteConfiguration>");
  }
  VnMembership::UserPtr Bind(std::string_view id, std::string_view account = "cn=orvane,dc=site",
                             std::string_view credential = "secret") {
    auto user = automation::CreateObject<VnMembership::User>("VnMembership.User");
    user->setServerInfo((folder_.Path() / "siteConfiguration.xml").string());
    user->BindAs(id, account, credential);
    return user;
  }
  std::string Failure(int number, std::string_view id, std::string_view account = "cn=orvane,dc=site",
                      std::string_view credential = "secret") {
    try {
      Bind(id, account, credential);
    } catch (const automation::Error& error) {
      EXPECT_EQ(error.Number(), number) << error.Description();
      return error.Description();
    }
    return "no failure";
  }

  const orvane_test::Server server_ = orvane_test::Server::Shared("slapd");
  orvane_test::TemporaryFolder folder_;
  automation::Runtime runtime_;
  automation::RuntimeScope scope_;
};

TEST_F(LdapUserTest, NamesKeepTheirLettersAndMissingAttributesAreEmpty) {
  const auto user = Bind("hm");
  EXPECT_EQ(user->LastName(), "M\xC3\xBCller");
  EXPECT_EQ(user->EMailAddress(), "");
  EXPECT_EQ(user->LanguageID(), 0);
  EXPECT_FALSE(user->SalutationFlag());
}

TEST_F(LdapUserTest, AnIdIsNeverAPattern) {
  EXPECT_EQ(Failure(VnMembership::kUnknownUser, "jdo*"), "The directory knows no user jdo*");
  EXPECT_EQ(Failure(VnMembership::kUnknownUser, "jdoe)(uid=*"), "The directory knows no user jdoe)(uid=*");
  EXPECT_EQ(Failure(VnMembership::kUnknownUser, ""), "The directory knows no user ");
  EXPECT_EQ(Bind("odd(*)\\")->LastName(), "Odd");
  EXPECT_EQ(VnMembership::FilterValue(std::string_view("a*(b)\\\0\n\xC3\xBC", 10)),
            "a\\2A\\28b\\29\\5C\\00\\0A\\C3\\BC");
  EXPECT_EQ(VnMembership::FilterValue(""), "");
}

TEST_F(LdapUserTest, TwoPeopleWithOneIdAreNobody) {
  EXPECT_EQ(Failure(VnMembership::kUnknownUser, "twin"), "The directory knows several users twin");
}

TEST_F(LdapUserTest, WhomTheAccountMayNotSeeIsUnknown) {
  EXPECT_EQ(Failure(VnMembership::kUnknownUser, "ghost"), "The directory knows no user ghost");
}

TEST_F(LdapUserTest, LooksBelowTheRootOnly) {
  Configure(server_.Setting("url"), "ou=people,dc=site");
  EXPECT_EQ(Bind("jdoe")->FirstName(), "Jane");
  Configure(server_.Setting("url"), "ou=none,dc=site");
  EXPECT_EQ(Failure(VnMembership::kUnknownUser, "jdoe"), "The directory knows no user jdoe");
}

TEST_F(LdapUserTest, AWrongAccountIsRefusedAndAnEmptyPasswordNeverEnters) {
  const std::string refusal = "The directory refuses the account cn=orvane,dc=site";
  EXPECT_EQ(Failure(VnMembership::kAccountRefused, "jdoe", "cn=orvane,dc=site", "wrong"), refusal);
  EXPECT_EQ(Failure(VnMembership::kAccountRefused, "jdoe", "cn=orvane,dc=site", ""), refusal);
  EXPECT_EQ(Failure(VnMembership::kAccountRefused, "jdoe", "no name at all", "secret"),
            "The directory refuses the account no name at all");
  EXPECT_EQ(Failure(VnMembership::kAccountRefused, "jdoe", "", "secret"),
            "The directory refuses the account ");
}

TEST_F(LdapUserTest, AServerThatDoesNotAnswerIsNamed) {
  Configure("ldap://127.0.0.1:1");
  EXPECT_EQ(Failure(VnMembership::kDirectoryUnavailable, "jdoe"),
            "ldap://127.0.0.1:1: bind: Can't contact LDAP server");
}

TEST_F(LdapUserTest, DemandedTlsThatCannotBeTrustedIsAFailure) {
  Configure(server_.Setting("url"), "dc=site", "<key name=\"LDAPStartTLS\">TRUE</key>");
  const std::string failure = Failure(VnMembership::kDirectoryUnavailable, "jdoe");
  EXPECT_EQ(failure.find(server_.Setting("url") + ": TLS: "), 0U) << failure;
}

}  // namespace
