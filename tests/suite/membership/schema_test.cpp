// The directory schema comes in two forms, for the two ways in which slapd is configured.
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <utility>

#include "tests/support/temporary_folder.hpp"

namespace orvane_test {
namespace {

// The definitions without comments, in the words of slapd.conf.
std::string Definitions(const std::string& file) {
  std::istringstream lines(TemporaryFolder::Read(std::filesystem::path(ORVANE_SCHEMA_FOLDER) / file));
  std::string definitions;
  for (std::string line; std::getline(lines, line);) {
    if (line.empty() || line[0] == '#' || line.rfind("dn:", 0) == 0 || line.rfind("cn:", 0) == 0 ||
        line.rfind("objectClass:", 0) == 0) {
      continue;
    }
    for (const auto& [from, to] :
         {std::pair<std::string, std::string>{"olcObjectIdentifier: ", "objectidentifier "},
          {"olcAttributeTypes: ", "attributetype "},
          {"olcObjectClasses: ", "objectclass "}}) {
      if (line.rfind(from, 0) == 0) line.replace(0, from.size(), to);
    }
    definitions += line + "\n";
  }
  return definitions;
}

TEST(DirectorySchemaTest, SaysTheSameInBothForms) {
  EXPECT_NE(Definitions("orvane.schema").find("NAME 'orvanePerson'"), std::string::npos);
  EXPECT_EQ(Definitions("orvane.ldif"), Definitions("orvane.schema"));
}

}  // namespace
}  // namespace orvane_test
