#include "suite/paths/native_path.hpp"

#include <gtest/gtest.h>

#include "tests/support/temporary_folder.hpp"

namespace {

using suite::NativePath;

class NativePathTest : public testing::Test {
 protected:
  orvane_test::TemporaryFolder folder_;
  const std::filesystem::path& root_ = folder_.Path();
};

TEST_F(NativePathTest, TurnsBackSlashesIntoThisMachinesSeparators) {
  folder_.Write("db/orvane.sqlite", "");
  EXPECT_EQ(NativePath("db\\orvane.sqlite", root_), root_ / "db/orvane.sqlite");
  EXPECT_EQ(NativePath("db/orvane.sqlite", root_), root_ / "db/orvane.sqlite");
}

TEST_F(NativePathTest, FindsNamesWithoutRegardToCase) {
  folder_.Write("config/siteConfiguration.xml", "");
  EXPECT_EQ(NativePath("CONFIG\\SiteConfiguration.XML", root_), root_ / "config/siteConfiguration.xml");
}

TEST_F(NativePathTest, PrefersTheExactName) {
  folder_.Write("Data/a", "");
  folder_.Write("data/a", "");
  EXPECT_EQ(NativePath("data\\a", root_), root_ / "data/a");
  EXPECT_EQ(NativePath("Data\\a", root_), root_ / "Data/a");
  EXPECT_EQ(NativePath("DATA\\a", root_), root_ / "Data/a");  // the first by name
}

TEST_F(NativePathTest, KeepsWhatDoesNotExistAsWritten) {
  folder_.Write("Data/x", "");
  EXPECT_EQ(NativePath("data\\New\\File.txt", root_), root_ / "Data/New/File.txt");
}

TEST_F(NativePathTest, TakesAnAbsolutePathAsItIs) {
  folder_.Write("a/b", "");
  EXPECT_EQ(NativePath((root_ / "a" / "b").string(), "/nowhere"), root_ / "a/b");
}

TEST_F(NativePathTest, DropsATrailingSeparator) {
  folder_.Write("mail/pickup/x", "");
  EXPECT_EQ(NativePath("mail\\pickup\\", root_), root_ / "mail/pickup");
}

TEST_F(NativePathTest, LeavesLettersBeyondAsciiExact) {
  folder_.Write("\xC3\x84/x", "");
  EXPECT_EQ(NativePath("\xC3\xA4\\x", root_), root_ / "\xC3\xA4/x");
}

}  // namespace
