#include "suite/membership/user.hpp"

#include <gtest/gtest.h>

#include <string>

#include "components/interfaces/user.hpp"
#include "platform/automation/runtime.hpp"
#include "suite/membership/directory.hpp"
#include "tests/suite/membership/failure.hpp"
#include "tests/support/temporary_folder.hpp"

namespace {

using orvane_test::Failure;

constexpr std::string_view kPeople = R"(dn: cn=orvane,dc=site
cn: orvane
userPassword: secret

dn: uid=jdoe,ou=people,dc=site
uid: jdoe
givenName: Jane
sn: Doe
mail: jane@x.example
o: Harbour Works
telephoneNumber: +44 1
title: Lead
facsimileTelephoneNumber: +44 2
orvaneLanguageID: 1043
orvaneLocale: 2057
orvaneBusinessPartner: 1042
orvaneEngineerCode: eng-17
orvaneSalutationFlag: TRUE
orvaneModem: +44 3
orvaneCountry: United Kingdom

dn: uid=bare,dc=site
uid: bare

dn: uid=twin,ou=a,dc=site
uid: twin

dn: uid=twin,ou=b,dc=site
uid: twin

dn: uid=outside,dc=elsewhere
uid: outside

dn: uid=wrong,dc=site
uid: wrong
orvaneLanguageID: Dutch
orvaneSalutationFlag: perhaps
)";

class UserTest : public testing::Test {
 protected:
  UserTest() : scope_(runtime_) {
    VnMembership::RegisterUser(runtime_.classes);
    Configure("dc=site", "");
    folder_.Write("home/config/directory.ldif", kPeople);
  }

  void Configure(const std::string& root, const std::string& server) {
    folder_.Write("home/config/siteConfiguration.xml",
                  "<siteConfiguration><section name=\"MEMBERSHIP\"><key name=\"LDAPRoot\">" + root +
                      "</key><key name=\"LDAPServer\">" + server + "</key></section></siteConfiguration>");
  }

  VnMembership::UserPtr Create() {
    auto user = automation::CreateObject<VnMembership::User>("VnMembership.User");
    user->setServerInfo(folder_.Path().string() + "/home\\config\\siteConfiguration.xml");
    return user;
  }
  VnMembership::UserPtr Bind(std::string_view id, std::string_view account = "cn=orvane,dc=site",
                             std::string_view credential = "secret") {
    auto user = Create();
    user->BindAs(id, account, credential);
    return user;
  }

  orvane_test::TemporaryFolder folder_;
  automation::Runtime runtime_;
  automation::RuntimeScope scope_;
};

TEST_F(UserTest, WhatTheDirectoryDoesNotHoldIsEmpty) {
  const auto user = Bind("bare");
  EXPECT_EQ(user->FirstName(), "");
  EXPECT_EQ(user->LanguageID(), 0);
  EXPECT_FALSE(user->SalutationFlag());
}

TEST_F(UserTest, IdsAreComparedWithoutRegardToCase) {
  EXPECT_EQ(Bind("JDoe")->FirstName(), "Jane");
}

TEST_F(UserTest, AnIdIsNeverAPattern) {
  EXPECT_EQ(Failure(VnMembership::kUnknownUser, [&] { Bind("*"); }), "The directory knows no user *");
  EXPECT_EQ(Failure(VnMembership::kUnknownUser, [&] { Bind("jd*"); }), "The directory knows no user jd*");
  EXPECT_EQ(Failure(VnMembership::kUnknownUser, [&] { Bind(""); }), "The directory knows no user ");
}

TEST_F(UserTest, TwoPeopleWithOneIdAreNobody) {
  EXPECT_EQ(Failure(VnMembership::kUnknownUser, [&] { Bind("twin"); }),
            "The directory knows several users twin");
}

TEST_F(UserTest, LooksBelowTheRootOnly) {
  EXPECT_EQ(Failure(VnMembership::kUnknownUser, [&] { Bind("outside"); }),
            "The directory knows no user outside");
  Configure("", "");
  EXPECT_EQ(Bind("outside")->LanguageID(), 0);
}

TEST_F(UserTest, AFileWithoutPasswordsLetsEveryAccountIn) {
  std::string people(kPeople);
  people.erase(0, people.find("dn: uid=jdoe"));
  folder_.Write("home/config/directory.ldif", people);
  EXPECT_EQ(Bind("jdoe", "cn=anybody,dc=site", "anything")->FirstName(), "Jane");
}

TEST_F(UserTest, AWrongAccountIsRefused) {
  const std::string refusal = "The directory refuses the account cn=orvane,dc=site";
  EXPECT_EQ(Failure(VnMembership::kAccountRefused, [&] { Bind("jdoe", "cn=orvane,dc=site", "wrong"); }),
            refusal);
  EXPECT_EQ(Failure(VnMembership::kAccountRefused, [&] { Bind("jdoe", "cn=orvane,dc=site", ""); }), refusal);
  EXPECT_EQ(Failure(VnMembership::kAccountRefused, [&] { Bind("jdoe", "cn=orvane", "secret"); }),
            "The directory refuses the account cn=orvane");
  EXPECT_EQ(Bind("jdoe", "CN=Orvane, DC=Site")->FirstName(), "Jane");
}

TEST_F(UserTest, AMissingFileIsNamed) {
  std::filesystem::remove(folder_.Path() / "home/config/directory.ldif");
  EXPECT_EQ(
      Failure(VnMembership::kDirectoryUnavailable, [&] { Bind("jdoe"); }),
      (folder_.Path() / "home/config/directory.ldif").string() + ": the directory's file cannot be read");
}

TEST_F(UserTest, BothFilesAreFoundInOtherSpellings) {
  const std::filesystem::path config = folder_.Path() / "home/config";
  std::filesystem::rename(config / "directory.ldif", config / "Directory.LDIF");
  std::filesystem::rename(config / "siteConfiguration.xml", config / "SITECONFIGURATION.XML");
  EXPECT_EQ(Bind("jdoe")->FirstName(), "Jane");
  std::string others(kPeople);
  others.replace(others.find("Jane"), 4, "Joan");
  folder_.Write("home/config/directory.ldif", others);
  EXPECT_EQ(Bind("jdoe")->FirstName(), "Joan") << "the file of the very name comes first";
}

TEST_F(UserTest, AChangedFileCountsAtOnce) {
  ASSERT_EQ(Bind("bare")->FirstName(), "");
  folder_.Write("home/config/directory.ldif",
                std::string(kPeople) + "\ndn: uid=new,dc=site\nuid: new\ngivenName: N\n");
  EXPECT_EQ(Bind("new")->FirstName(), "N");
}

TEST_F(UserTest, ANumberThatIsNoneIsToldWhenItIsRead) {
  const auto user = Bind("wrong");
  EXPECT_EQ(Failure(VnMembership::kBadAttribute, [&] { user->LanguageID(); }),
            "uid=wrong,dc=site: orvaneLanguageID is \"Dutch\", no 32-bit number");
  EXPECT_EQ(Failure(VnMembership::kBadAttribute, [&] { user->SalutationFlag(); }),
            "uid=wrong,dc=site: orvaneSalutationFlag is \"perhaps\", neither TRUE nor FALSE");
}

TEST_F(UserTest, AServerThatIsNoLdapServerIsNamed) {
  Configure("dc=site", "http://x");
  EXPECT_EQ(
      Failure(VnMembership::kDirectoryUnavailable, [&] { Create(); }),
      (folder_.Path() / "home/config/siteConfiguration.xml").string() +
          ": section \"MEMBERSHIP\", key \"LDAPServer\": found \"http://x\"; expected ldap://host:port, "
          "ldaps://host:port or nothing");
}

TEST_F(UserTest, NothingIsKnownBeforeTheBind) {
  const auto user = Create();
  EXPECT_EQ(Failure(VnMembership::kNotBound, [&] { user->FirstName(); }),
            "BindAs must be called before an attribute is read");
  const auto fresh = automation::CreateObject<VnMembership::User>("VnMembership.User");
  EXPECT_EQ(Failure(VnMembership::kNotBound, [&] { fresh->BindAs("jdoe", "cn=orvane,dc=site", "secret"); }),
            "setServerInfo must be called before BindAs");
}

TEST_F(UserTest, AnEditOfTheDirectoryCountsFromTheNextLookUp) {
  EXPECT_EQ(Bind("jdoe")->FirstName(), "Jane");
  std::string people(kPeople);
  people.replace(people.find("Jane"), 4, "Jill");
  folder_.Write("home/config/directory.ldif", people);
  EXPECT_EQ(Bind("jdoe")->FirstName(), "Jill");
  people.replace(people.find("secret"), 6, "others");
  folder_.Write("home/config/directory.ldif", people);
  EXPECT_EQ(Failure(VnMembership::kAccountRefused, [&] { Bind("jdoe"); }),
            "The directory refuses the account cn=orvane,dc=site");
  EXPECT_EQ(Bind("jdoe", "cn=orvane,dc=site", "others")->FirstName(), "Jill");
}

TEST_F(UserTest, ADirectoryThatBreaksIsReportedUntilItIsMended) {
  EXPECT_EQ(Bind("jdoe")->FirstName(), "Jane");
  folder_.Write("home/config/directory.ldif", "uid: jdoe\n");
  const std::string report =
      (folder_.Path() / "home/config/directory.ldif").string() + ":1: expected an entry's \"dn:\"";
  EXPECT_EQ(Failure(VnMembership::kDirectoryUnavailable, [&] { Bind("jdoe"); }), report);
  EXPECT_EQ(Failure(VnMembership::kDirectoryUnavailable, [&] { Bind("jdoe"); }), report) << "and again";
  folder_.Write("home/config/directory.ldif", kPeople);
  EXPECT_EQ(Bind("jdoe")->FirstName(), "Jane");
}

}  // namespace
