
#include "tests/suite/membership/directory_conformance.hpp"

namespace orvane_test {
namespace {

std::string Embedded(const TemporaryFolder& folder) {
  folder.Write("home/config/directory.ldif", TemporaryFolder::Read(ORVANE_MEMBERSHIP_PEOPLE));
  return "<key name=\"LDAPServer\"></key>";
}

INSTANTIATE_TEST_SUITE_P(Embedded, DirectoryConformanceTest,
                         testing::Values(DirectoryKind{"Ldif", &Embedded}),
                         [](const auto& kind) { return kind.param.name; });

// Such an entry is a mistake in the file, and no way in.
TEST_P(DirectoryConformanceTest, AnEntryWithAnEmptyPasswordLetsNobodyIn) {
  folder_.Write("home/config/directory.ldif",
                "dn: cn=open,dc=site\ncn: open\nuserPassword:\n\n"
                "dn: uid=jdoe,dc=site\nuid: jdoe\ngivenName: Jane\n");
  EXPECT_EQ(Failure(VnMembership::kAccountRefused, [&] { Bind("jdoe", "cn=open,dc=site", ""); }),
            "The directory refuses the account cn=open,dc=site");
  EXPECT_EQ(Failure(VnMembership::kAccountRefused, [&] { Bind("jdoe", "cn=open,dc=site", " "); }),
            "The directory refuses the account cn=open,dc=site");
}

}  // namespace
}  // namespace orvane_test
