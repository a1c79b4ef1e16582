
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

}  // namespace
}  // namespace orvane_test
