#include "platform/scripting/path_text.hpp"

#include <gtest/gtest.h>

#include "tests/support/error_number.hpp"
#include "tests/support/test_runtime.hpp"

namespace orvane_test {
namespace {

using Scripting::ParentFolderName;

TEST(ParentFolderNameTest, DropsTheLastPartAndItsSeparator) {
  EXPECT_EQ(ParentFolderName("C:\\suite\\home"), "C:\\suite");
  EXPECT_EQ(ParentFolderName("C:/suite/home"), "C:/suite");
  EXPECT_EQ(ParentFolderName("/suite/home"), "/suite");
  EXPECT_EQ(ParentFolderName("suite\\home\\a.txt"), "suite\\home");
  EXPECT_EQ(ParentFolderName("\\\\server\\share\\x"), "\\\\server\\share");
}

TEST(ParentFolderNameTest, KeepsARootAsParent) {
  EXPECT_EQ(ParentFolderName("C:\\suite"), "C:\\");
  EXPECT_EQ(ParentFolderName("/suite"), "/");
  EXPECT_EQ(ParentFolderName("C:suite"), "C:");
}

TEST(ParentFolderNameTest, IsEmptyForADriveARootAndABareName) {
  for (const char* path : {"", "C:", "C:\\", "/", "\\", "name", "name\\"})
    EXPECT_EQ(ParentFolderName(path), "") << path;
}

TEST(ParentFolderNameTest, DoesNotCountSeparatorsAtTheEndOrDoubledOnes) {
  EXPECT_EQ(ParentFolderName("C:\\suite\\home\\"), "C:\\suite");
  EXPECT_EQ(ParentFolderName("/suite//home//"), "/suite");
}

TEST(DriveLetterTest, IsAnAsciiLetterBeforeAColon) {
  EXPECT_EQ(Scripting::DriveLetter("c:\\x"), 'C');
  EXPECT_EQ(Scripting::DriveLetter("Z:"), 'Z');
  for (const char* path : {"", "C", "1:", "\\C:", "ab:c", "::"})
    EXPECT_EQ(Scripting::DriveLetter(path), 0) << path;
}

TEST(FoldedNameTest, NeedsALocaleForLettersBeyondAsciiOnly) {
  EXPECT_EQ(Scripting::FoldedName("CHAT.Txt"), "chat.txt");
  EXPECT_EQ(orvane_test::ErrorNumberOf([] { Scripting::FoldedName("\xC3\x84"); }), 91);
}

}  // namespace
}  // namespace orvane_test
