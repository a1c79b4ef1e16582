#include "suite/membership/distinguished_name.hpp"

#include <gtest/gtest.h>

namespace {

using VnMembership::LiesBelow;
using VnMembership::NormalName;

TEST(DistinguishedNameTest, CaseAndBlanksAroundSeparatorsDoNotCount) {
  EXPECT_EQ(NormalName("CN = Orvane , DC=Example"), "cn=orvane,dc=example");
  EXPECT_EQ(NormalName("cn=Jane Q. Doe"), "cn=jane q. doe");
  EXPECT_EQ(NormalName(""), "");
}

TEST(DistinguishedNameTest, AnEscapedSeparatorBelongsToItsValue) {
  EXPECT_EQ(NormalName("cn=Doe\\, Jane,dc=x"), NormalName("CN=\"doe, jane\" , DC=X"));
  EXPECT_NE(NormalName("cn=Doe\\, Jane,dc=x"), NormalName("cn=Doe, Jane,dc=x"));
  EXPECT_FALSE(LiesBelow("cn=Doe\\,dc=x", "dc=x"));
}

TEST(DistinguishedNameTest, EscapedAndPlainSpellingsOfAValueAreOne) {
  EXPECT_EQ(NormalName("cn=M\\C3\\BCller"), NormalName("cn=M\xC3\xBCller"));
  EXPECT_EQ(NormalName("ou=a\\2Cb,dc=x"), NormalName("ou=a\\,b,dc=x"));
}

TEST(DistinguishedNameTest, ATextThatIsNoNameIsItself) {
  EXPECT_EQ(NormalName(" Orvane "), "orvane");
  EXPECT_EQ(NormalName(","), ",");
  EXPECT_FALSE(LiesBelow("orvane", "dc=x"));
}

TEST(DistinguishedNameTest, ANameLiesBelowItselfItsParentsAndAnEmptyRoot) {
  EXPECT_TRUE(LiesBelow("uid=jdoe,ou=people,dc=x", "DC=X"));
  EXPECT_TRUE(LiesBelow("uid=jdoe,ou=people,dc=x", "ou=people, dc=x"));
  EXPECT_TRUE(LiesBelow("dc=x", "dc=x"));
  EXPECT_TRUE(LiesBelow("uid=jdoe", ""));
  EXPECT_FALSE(LiesBelow("uid=jdoe,dc=xx", "dc=x"));
  EXPECT_FALSE(LiesBelow("uid=jdoe,adc=x", "dc=x"));
  EXPECT_FALSE(LiesBelow("dc=x", "ou=people,dc=x"));
}

}  // namespace
