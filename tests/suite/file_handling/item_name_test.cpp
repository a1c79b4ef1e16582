#include "suite/file_handling/item_name.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace OrvCommonMTS {
namespace {

using ::testing::ElementsAre;

TEST(ItemNameTest, SplitsAtEitherSlash) {
  EXPECT_THAT(NameParts("17A\\report.txt"), ElementsAre("17A", "report.txt"));
  EXPECT_THAT(NameParts("17A/report.txt"), ElementsAre("17A", "report.txt"));
}

TEST(ItemNameTest, TakesPlainNames) {
  EXPECT_FALSE(NameProblem("17Q", 1));
  EXPECT_FALSE(NameProblem("17A\\it's a report.txt", 2));
  EXPECT_FALSE(NameProblem("..hidden", 1));
  EXPECT_FALSE(NameProblem("ab:c", 1));
}

TEST(ItemNameTest, RefusesWaysOutOfTheFolder) {
  EXPECT_EQ(NameProblem("..\\..\\x", 1), "it would leave its folder");
  EXPECT_EQ(NameProblem("17A/../x", 2), "it would leave its folder");
  EXPECT_EQ(NameProblem("..", 1), "it would leave its folder");
  EXPECT_EQ(NameProblem(".", 1), "it would leave its folder");
  EXPECT_EQ(NameProblem(".. ", 1), "it would leave its folder");
  EXPECT_EQ(NameProblem("17A\\...", 2), "it would leave its folder");
  EXPECT_EQ(NameProblem(" ", 1), "it would leave its folder");
}

TEST(ItemNameTest, RefusesAbsolutePathsAndDrives) {
  EXPECT_EQ(NameProblem("\\x", 1), "it is an absolute path");
  EXPECT_EQ(NameProblem("/etc/passwd", 1), "it is an absolute path");
  EXPECT_EQ(NameProblem("\\\\server\\share", 2), "it is an absolute path");
  EXPECT_EQ(NameProblem("C:\\x", 2), "it begins with a drive");
  EXPECT_EQ(NameProblem("c:x", 1), "it begins with a drive");
}

TEST(ItemNameTest, RefusesEmptyNamesAndParts) {
  EXPECT_EQ(NameProblem("", 1), "it is empty");
  EXPECT_EQ(NameProblem("17A\\", 2), "it has an empty part");
  EXPECT_EQ(NameProblem("17A\\\\x", 2), "it has an empty part");
}

TEST(ItemNameTest, RefusesNamesThatWouldEndACommand) {
  EXPECT_EQ(NameProblem("x\r\nDELE y", 1), "it holds a control character");
  EXPECT_EQ(NameProblem("x\ny", 1), "it holds a control character");
  EXPECT_EQ(NameProblem(std::string_view("x\0y", 3), 1), "it holds a control character");
  EXPECT_EQ(NameProblem("x\x7f", 1), "it holds a control character");
}

TEST(ItemNameTest, RefusesNamesOfTheWrongDepth) {
  EXPECT_EQ(NameProblem("17Q\\a.txt", 1), "it has 2 parts");
  EXPECT_EQ(NameProblem("17Q", 2), "it has 1 parts");
  EXPECT_EQ(NameProblem("17Q\\deep\\a.txt", 2), "it has 3 parts");
}

}  // namespace
}  // namespace OrvCommonMTS
