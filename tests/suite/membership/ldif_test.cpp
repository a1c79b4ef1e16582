#include "suite/membership/ldif.hpp"

#include <gtest/gtest.h>

#include "platform/automation/error.hpp"
#include "suite/membership/directory.hpp"
#include "tests/support/damage.hpp"

namespace {

using VnMembership::ParseLdif;
using Values = std::vector<std::string>;

std::string Refusal(std::string_view text) {
  try {
    ParseLdif(text, "d.ldif");
  } catch (const automation::Error& error) {
    EXPECT_EQ(error.Number(), VnMembership::kDirectoryUnavailable);
    return error.Description();
  }
  return "accepted";
}

TEST(LdifTest, ReadsEntriesBetweenEmptyLines) {
  const auto entries =
      ParseLdif("version: 1\n\ndn: uid=a\nuid: a\nmail: a@x\nmail: b@x\n\n\n\ndn: uid=b\r\nuid:b\r\n", "d");
  ASSERT_EQ(entries.size(), 2U);
  EXPECT_EQ(entries[0].dn, "uid=a");
  EXPECT_EQ(entries[0].attributes.at("mail"), (Values{"a@x", "b@x"}));
  EXPECT_EQ(entries[1].Value("uid"), "b");
}

TEST(LdifTest, AttributeNamesAreComparedWithoutRegardToCase) {
  const auto entries = ParseLdif("dn: x\nGivenName: Jane\n", "d");
  EXPECT_EQ(entries[0].Value("givenname"), "Jane");
  EXPECT_EQ(entries[0].Value("none"), "");
}

TEST(LdifTest, JoinsContinuedLinesAndDropsComments) {
  const auto entries = ParseLdif("# one\n  still the comment\ndn: uid=a\n# two\ncn: Jane\n  Doe\n", "d");
  ASSERT_EQ(entries.size(), 1U);
  EXPECT_EQ(entries[0].Value("cn"), "Jane Doe");
}

TEST(LdifTest, DecodesBase64) {
  const auto entries = ParseLdif("dn:: dWlkPWE=\nsn:: TcO8bGxlcg==\ncn:: \n", "d");
  EXPECT_EQ(entries[0].dn, "uid=a");
  EXPECT_EQ(entries[0].Value("sn"), "M\xC3\xBCller");
  EXPECT_EQ(entries[0].Value("cn"), "");
}

TEST(LdifTest, SaysWhereItCannotReadOn) {
  EXPECT_EQ(Refusal("dn: a\nno attribute\n"), "d.ldif:2: expected \"attribute: value\"");
  EXPECT_EQ(Refusal("uid: a\n"), "d.ldif:1: expected an entry's \"dn:\"");
  EXPECT_EQ(Refusal("dn: a\n\n\ndn: b\ndn: c\n"), "d.ldif:5: expected an empty line between two entries");
  EXPECT_EQ(Refusal("dn: a\nchangetype: delete\n"), "d.ldif:2: expected entries, not changes");
  EXPECT_EQ(Refusal("dn: a\nphoto:< file:///etc/passwd\n"),
            "d.ldif:2: expected a value of its own, not a URL");
  EXPECT_EQ(Refusal("dn: a\nsn:: TcO8?\n"), "d.ldif:2: expected a value in base64");
  EXPECT_EQ(Refusal("dn: a\nsn:: TcO=bGxlcg==\n"), "d.ldif:2: expected a value in base64");
}

TEST(LdifTest, DamagedTextIsReadOrRefusedWithItsPlace) {
  constexpr std::string_view kWhole =
      "version: 1\n# people\ndn: uid=a,dc=x\nuid: a\ncn: Jane\n  Doe\nsn:: TcO8bGxlcg==\n\ndn:: "
      "dWlkPWI=\nuid: b\n";
  int refused = 0;
  for (unsigned seed = 1; seed <= 5000; ++seed) {
    const std::string refusal = Refusal(orvane_test::Damaged(kWhole, seed));
    if (refusal == "accepted") continue;
    ++refused;
    ASSERT_EQ(refusal.compare(0, 7, "d.ldif:"), 0) << refusal;
  }
  EXPECT_GT(refused, 500);
  EXPECT_LT(refused, 4900);
}

}  // namespace
