#include "platform/cdo/curl/addresses.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/raised_error.hpp"

namespace {

using CDO::curl::Mailbox;
using CDO::curl::ParseAddresses;
using testing::ElementsAre;
using testing::IsEmpty;

// "name|address" of each mailbox.
std::vector<std::string> Read(const std::string& text) {
  std::vector<std::string> shown;
  for (const Mailbox& mailbox : ParseAddresses(text, "recipient")) {
    shown.push_back(mailbox.name + "|" + mailbox.address);
  }
  return shown;
}

TEST(AddressesTest, OneAddressStandsAloneOrBehindAName) {
  EXPECT_THAT(Read("jane@example.org"), ElementsAre("|jane@example.org"));
  EXPECT_THAT(Read("  jane@example.org\t"), ElementsAre("|jane@example.org"));
  EXPECT_THAT(Read("<jane@example.org>"), ElementsAre("|jane@example.org"));
  EXPECT_THAT(Read("Jane Q. Doe < jane@example.org >"), ElementsAre("Jane Q. Doe|jane@example.org"));
  EXPECT_THAT(Read("jane@home <jane@example.org>"), ElementsAre("jane@home|jane@example.org"));
  EXPECT_THAT(Read("root"), ElementsAre("|root"));
  EXPECT_THAT(Read("jane@[192.0.2.1]"), ElementsAre("|jane@[192.0.2.1]"));
}

TEST(AddressesTest, QuotedNamesMayHoldAnything) {
  EXPECT_THAT(Read(R"("Doe, Jane; (\"J\" \\) <x>" <jane@example.org>)"),
              ElementsAre(R"(Doe, Jane; ("J" \) <x>|jane@example.org)"));
  EXPECT_THAT(Read(R"("jane doe"@example.org)"), ElementsAre(R"(|"jane doe"@example.org)"));
  EXPECT_THAT(Read(R"(<"a>b, c"@example.org>, d@example.org)"),
              ElementsAre(R"(|"a>b, c"@example.org)", "|d@example.org"));
}

TEST(AddressesTest, CommentsAreLeftOut) {
  EXPECT_THAT(Read("jane@example.org (Jane Doe)"), ElementsAre("|jane@example.org"));
  EXPECT_THAT(Read("(home, (old\\)) ;) Jane (x) <jane@example.org>(end)"),
              ElementsAre("Jane|jane@example.org"));
}

TEST(AddressesTest, CommasAndSemicolonsSeparateAddresses) {
  EXPECT_THAT(Read("a@example.org, B <b@example.org>;c@example.org"),
              ElementsAre("|a@example.org", "B|b@example.org", "|c@example.org"));
  EXPECT_THAT(Read(" ,; a@example.org,, ;"), ElementsAre("|a@example.org"));
}

TEST(AddressesTest, ASeparatorInANameBelongsToTheName) {
  EXPECT_THAT(Read("Doe, John <john@x.example>"), ElementsAre("Doe, John|john@x.example"));
  EXPECT_THAT(Read("Smith; Jones <j@x.example>"), ElementsAre("Smith; Jones|j@x.example"));
  EXPECT_THAT(Read("\"Doe\", John, Jr. <john@x.example>"), ElementsAre("Doe, John, Jr.|john@x.example"));
  EXPECT_THAT(Read("a@x.example, Doe, John <john@x.example>; b@x.example"),
              ElementsAre("|a@x.example", "Doe, John|john@x.example", "|b@x.example"));
}

TEST(AddressesTest, GroupsAreTheirMembers) {
  EXPECT_THAT(Read("The Team: a@example.org, B <b@example.org>; c@example.org"),
              ElementsAre("|a@example.org", "B|b@example.org", "|c@example.org"));
  EXPECT_THAT(Read("mailto:a@example.org"), ElementsAre("|a@example.org"));
  EXPECT_THAT(Read("undisclosed-recipients:;"), IsEmpty());
}

TEST(AddressesTest, ATextOfBlanksHoldsNoAddress) {
  EXPECT_THAT(Read(""), IsEmpty());
  EXPECT_THAT(Read(" \t "), IsEmpty());
  EXPECT_THAT(Read("(nobody)"), IsEmpty());
}

TEST(AddressesTest, ADomainBeyondAsciiGetsItsAsciiForm) {
  EXPECT_THAT(Read("info@b\xC3\xBC"
                   "cher.example"),
              ElementsAre("|info@xn--bcher-kva.example"));
  EXPECT_THAT(Read("info@STRASSE.example"), ElementsAre("|info@STRASSE.example"));
  EXPECT_THAT(Read("info@stra\xC3\x9F"
                   "e.example"),
              ElementsAre("|info@xn--strae-oqa.example"));
}

TEST(AddressesTest, ALocalPartBeyondAsciiStays) {
  EXPECT_THAT(Read("J\xC3\xB6rg <j\xC3\xB6rg@example.org>"),
              ElementsAre("J\xC3\xB6rg|j\xC3\xB6rg@example.org"));
}

constexpr const char* kNoAt = "a part of it has no \"@\"";

struct Refused {
  std::string text;
  std::string why;
};

class RefusedAddressTest : public testing::TestWithParam<Refused> {};

TEST_P(RefusedAddressTest, IsRefusedWithItsReason) {
  const automation::Error error = orvane_test::ErrorOf([] { Read(GetParam().text); });
  EXPECT_EQ(error.Number(), 5);
  EXPECT_EQ(error.Source(), "CDO.Message");
  EXPECT_THAT(error.Description(),
              testing::StartsWith("Invalid procedure call or argument: the recipient \""));
  EXPECT_THAT(error.Description(), testing::EndsWith("\" is no mail address: " + GetParam().why));
  for (const char c : error.Description()) EXPECT_TRUE(c < 0 || c >= ' ') << "control character";
}

INSTANTIATE_TEST_SUITE_P(
    Texts, RefusedAddressTest,
    testing::Values(
        Refused{"a@b.c\r\nBcc: d@e.f", "it holds a line break or a NUL character"},
        Refused{"a@b.c\nRCPT TO:<d@e.f>", "it holds a line break or a NUL character"},
        Refused{"\"a\r\"@b.c", "it holds a line break or a NUL character"},
        Refused{std::string("a@b.c\0", 6), "it holds a line break or a NUL character"},
        Refused{"a@b.c d@e.f", "a blank stands in it"}, Refused{"a@b@c", "\"@\" stands in it"},
        Refused{"@b.c", "nothing stands before the \"@\""}, Refused{"<>", "nothing stands before the \"@\""},
        Refused{"Name <>", "nothing stands before the \"@\""},
        Refused{"a@", "nothing stands behind the \"@\""}, Refused{"<a@b.c", "a \"<\" stands without a \">\""},
        Refused{"<a@b.c <d@e.f>", "a \"<\" stands without a \">\""},
        Refused{"a@b.c>", "a \">\" stands without a \"<\""},
        Refused{"<a@b.c> <d@e.f>", "two addresses stand without a comma between them"},
        Refused{"<a@b.c>x", "something follows the address in angle brackets"},
        Refused{"<a@b.c> RCPT TO:", "something follows the address in angle brackets"},
        Refused{"\"a@b.c", "a quotation mark is not closed"},
        Refused{"a@b.c \"x\\", "a quotation mark is not closed"},
        Refused{"a@b.c (x", "a comment is not closed"}, Refused{"a@b.c (x\\)", "a comment is not closed"},
        Refused{"\"a\"b@c", "a quoted text stands beside another"},
        Refused{"<@r.x:a@b.c>", "nothing stands before the \"@\""}, Refused{"a@b\\c", "\"\\\" stands in it"},
        Refused{"a@[1.2\\]", "\"[\" stands in it"}, Refused{"john@x, none", kNoAt},
        Refused{"none, john@x", kNoAt}, Refused{"Doe, John", kNoAt}, Refused{"root,", kNoAt},
        Refused{"john@x, <none>", kNoAt}, Refused{"Info: Support", kNoAt},
        Refused{"Doe, Info: john@x", kNoAt}, Refused{"Team: none;", kNoAt}, Refused{"\"Bob\"", kNoAt},
        Refused{"<\"Bob\">", kNoAt}, Refused{"\xFF@b.c", "it is not UTF-8"},
        Refused{"a@\xFF.c", "its domain has no ASCII form"},
        Refused{"a@\xC2\xAD.c", "its domain has no ASCII form"},
        Refused{"a@" + std::string(400, 'b'), "it is too long"}));

}  // namespace
