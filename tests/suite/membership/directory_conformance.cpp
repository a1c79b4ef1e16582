#include "tests/suite/membership/directory_conformance.hpp"

namespace orvane_test {
namespace {

using VnMembership::kAccountRefused;
using VnMembership::kUnknownUser;

TEST_P(DirectoryConformanceTest, TellsEverythingAboutAPerson) {
  const auto user = Bind("jdoe");
  EXPECT_EQ(user->FirstName(), "Jane");
  EXPECT_EQ(user->LastName(), "Doe");
  EXPECT_EQ(user->EMailAddress(), "jane@x.example");
  EXPECT_EQ(user->CompanyName(), "Harbour Works");
  EXPECT_EQ(user->PhoneNumber(), "+44 1");
  EXPECT_EQ(user->Position(), "Lead");
  EXPECT_EQ(user->Fax(), "+44 2");
  EXPECT_EQ(user->Modem(), "+44 3");
  EXPECT_EQ(user->Country(), "United Kingdom");
  EXPECT_EQ(user->LanguageID(), 1043);
  EXPECT_EQ(user->Locale(), 2057);
  EXPECT_EQ(user->BusinessPartnerNumber(), 1042);
  EXPECT_EQ(user->EngineerCode(), "eng-17");
  EXPECT_TRUE(user->SalutationFlag());
}

TEST_P(DirectoryConformanceTest, AnswersEmptyForWhatItDoesNotHold) {
  const auto user = Bind("bare");
  EXPECT_EQ(user->FirstName(), "");
  EXPECT_EQ(user->EMailAddress(), "");
  EXPECT_EQ(user->CompanyName(), "");
  EXPECT_EQ(user->LanguageID(), 0);
  EXPECT_EQ(user->Locale(), 0);
  EXPECT_EQ(user->BusinessPartnerNumber(), 0);
  EXPECT_EQ(user->EngineerCode(), "");
  EXPECT_FALSE(user->SalutationFlag());
}

TEST_P(DirectoryConformanceTest, KeepsLettersBeyondAscii) {
  const auto user = Bind("m\xC3\xBCller");
  EXPECT_EQ(user->FirstName(), "J\xC3\xBCrgen");
  EXPECT_EQ(user->LastName(), "M\xC3\xBCller");
  EXPECT_EQ(user->BusinessPartnerNumber(), -2147483647 - 1);
  EXPECT_FALSE(user->SalutationFlag());
}

TEST_P(DirectoryConformanceTest, FindsIdsWithoutRegardToAsciiCase) {
  EXPECT_EQ(Bind("JDoe")->FirstName(), "Jane");
  EXPECT_EQ(Failure(kUnknownUser, [&] { Bind("M\xC3\x9CLLER"); }),
            "The directory knows no user M\xC3\x9CLLER");
}

TEST_P(DirectoryConformanceTest, TakesAnIdForAValueNeverForAPattern) {
  EXPECT_EQ(Bind("*")->LastName(), "Star");
  EXPECT_EQ(Bind("*)(uid=*")->LastName(), "Filter");
  EXPECT_EQ(Bind("a,b=c")->LastName(), "Name");
  EXPECT_EQ(Bind("DOMAIN\\user")->LastName(), "Backslash");
  for (const char* id :
       {"j*", "*doe", "jdoe)(uid=*", "jdoe)", "(jdoe", "\\6adoe", "jdoe,ou=people,dc=site", "jdoe*"}) {
    EXPECT_EQ(Failure(kUnknownUser, [&] { Bind(id); }), "The directory knows no user " + std::string(id));
  }
}

TEST_P(DirectoryConformanceTest, KnowsNobodyByAnEmptyIdOrOneWithOtherBlanks) {
  for (const char* id : {"", " ", " jdoe", "jdoe ", "nobody"}) {
    EXPECT_EQ(Failure(kUnknownUser, [&] { Bind(id); }), "The directory knows no user " + std::string(id));
  }
}

TEST_P(DirectoryConformanceTest, TakesTwoPeopleWithOneIdForNobody) {
  EXPECT_EQ(Failure(kUnknownUser, [&] { Bind("twin"); }), "The directory knows several users twin");
}

TEST_P(DirectoryConformanceTest, LooksBelowTheRootOnly) {
  EXPECT_EQ(Failure(kUnknownUser, [&] { Bind("outside"); }), "The directory knows no user outside");
  SetRoot("ou=people, DC=Site");
  EXPECT_EQ(Bind("jdoe")->FirstName(), "Jane");
  EXPECT_EQ(Bind("twin")->LastName(), "Twin") << "only one of the two lies below this root";
  EXPECT_EQ(Failure(kUnknownUser, [&] { Bind("bare"); }), "The directory knows no user bare");
}

TEST_P(DirectoryConformanceTest, LooksEverywhereWithoutARoot) {
  SetRoot("");
  EXPECT_EQ(Bind("outside")->LastName(), "Outside");
  EXPECT_EQ(Bind("jdoe")->FirstName(), "Jane");
}

TEST_P(DirectoryConformanceTest, KnowsNobodyBelowARootThatIsNotThere) {
  for (const char* root : {"dc=nowhere", "ou=nothing,dc=site"}) {
    SetRoot(root);
    EXPECT_EQ(Failure(kUnknownUser, [&] { Bind("jdoe"); }), "The directory knows no user jdoe") << root;
  }
}

TEST_P(DirectoryConformanceTest, RefusesAWrongAccountOrCredential) {
  const auto refusal = [&](std::string_view account, std::string_view credential) {
    return Failure(kAccountRefused, [&] { Bind("jdoe", account, credential); });
  };
  EXPECT_EQ(refusal("cn=orvane,dc=site", "wrong"), "The directory refuses the account cn=orvane,dc=site");
  EXPECT_EQ(refusal("cn=orvane,dc=site", "Secret"), "The directory refuses the account cn=orvane,dc=site");
  EXPECT_EQ(refusal("cn=orvane", "secret"), "The directory refuses the account cn=orvane");
  EXPECT_EQ(refusal("cn=nobody,dc=site", "secret"), "The directory refuses the account cn=nobody,dc=site");
  EXPECT_EQ(refusal("uid=nopassword,dc=site", "secret"),
            "The directory refuses the account uid=nopassword,dc=site");
  EXPECT_EQ(refusal("no name", "secret"), "The directory refuses the account no name");
}

TEST_P(DirectoryConformanceTest, LetsNobodyInWithoutANameOrACredential) {
  EXPECT_EQ(Failure(kAccountRefused, [&] { Bind("jdoe", "cn=orvane,dc=site", ""); }),
            "The directory refuses the account cn=orvane,dc=site");
  EXPECT_EQ(Failure(kAccountRefused, [&] { Bind("jdoe", "", ""); }), "The directory refuses the account ");
  EXPECT_EQ(Failure(kAccountRefused, [&] { Bind("jdoe", "", "secret"); }),
            "The directory refuses the account ");
}

TEST_P(DirectoryConformanceTest, TakesAnAccountsNameInAnyCaseAndWithBlanks) {
  EXPECT_EQ(Bind("jdoe", "CN=Orvane, DC=Site")->FirstName(), "Jane");
}

TEST_P(DirectoryConformanceTest, BecomesAnotherPersonWhenBoundAgainAndKeepsTheFirstWhenThatFails) {
  const auto user = Bind("jdoe");
  EXPECT_EQ(Failure(kUnknownUser, [&] { user->BindAs("nobody", "cn=orvane,dc=site", "secret"); }),
            "The directory knows no user nobody");
  EXPECT_EQ(user->FirstName(), "Jane");
  user->BindAs("bare", "cn=orvane,dc=site", "secret");
  EXPECT_EQ(user->LastName(), "bare");
}

}  // namespace
}  // namespace orvane_test
