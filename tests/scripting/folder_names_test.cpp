#include "platform/scripting/local/folder_names.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "tests/support/temporary_folder.hpp"

namespace {

namespace fs = std::filesystem;
using Scripting::local::FolderNames;

// A folder that is large enough for its names to be kept, in which a name has been looked for.
class FolderNamesTest : public testing::Test {
 protected:
  FolderNamesTest() {
    Fill(folder_);
    EXPECT_EQ(Find("nothing"), std::nullopt);
  }

  static void Fill(const fs::path& folder) {
    fs::create_directories(folder);
    for (int i = 0; i < 300; ++i) Make(folder / ("File" + std::to_string(i)));
  }
  static void Make(const fs::path& file) { std::ofstream stream(file); }
  std::optional<std::string> Find(const std::string& name) { return names_.Find(folder_.string(), name); }

  orvane_test::TemporaryFolder temporary_;
  const fs::path folder_ = temporary_.Path() / "folder";
  FolderNames names_;
};

TEST_F(FolderNamesTest, FindsNamesInTheSpellingOfTheDisk) {
  EXPECT_EQ(Find("fILE17"), "File17");
  EXPECT_EQ(Find("File300"), std::nullopt);
}

TEST_F(FolderNamesTest, FindsWhatCameAfterwardsAtOnce) {
  for (int i = 0; i < 50; ++i) {
    const std::string name = "New" + std::to_string(i);
    EXPECT_EQ(Find(name), std::nullopt);
    Make(folder_ / name);
    EXPECT_EQ(Find("NEW" + std::to_string(i)), name);
  }
}

TEST_F(FolderNamesTest, FindsNothingOfWhatWent) {
  fs::remove(folder_ / "File17");
  EXPECT_EQ(Find("FILE17"), std::nullopt);
  fs::rename(folder_ / "File18", temporary_.Path() / "File18");
  EXPECT_EQ(Find("FILE18"), std::nullopt);
  fs::rename(folder_ / "File19", folder_ / "Other19");
  EXPECT_EQ(Find("FILE19"), std::nullopt);
  EXPECT_EQ(Find("OTHER19"), "Other19");
}

TEST_F(FolderNamesTest, KeepsANameThatAnotherFileTakesOver) {
  Make(folder_ / ".File17.saving");
  fs::rename(folder_ / ".File17.saving", folder_ / "File17");
  EXPECT_EQ(Find("FILE17"), "File17");
  fs::remove(folder_ / "File17");
  Make(folder_ / "File17");
  EXPECT_EQ(Find("FILE17"), "File17");
}

TEST_F(FolderNamesTest, TakesTheFirstOfSeveralNamesInByteOrder) {
  Make(folder_ / "FILE17");
  EXPECT_EQ(Find("file17"), "FILE17");
  fs::remove(folder_ / "FILE17");
  EXPECT_EQ(Find("file17"), "File17");
}

TEST_F(FolderNamesTest, KeepsUpWithItsOwnRemovals) {
  const fs::path file = folder_ / "File17";
  names_.RemoveAndUpdate(file.string(), [&] { fs::remove(file); });
  EXPECT_EQ(Find("FILE17"), std::nullopt);
  Make(file);
  EXPECT_EQ(Find("FILE17"), "File17");
}

TEST_F(FolderNamesTest, LooksIntoTheFolderThatIsAtThePathNow) {
  fs::rename(folder_, temporary_.Path() / "moved");
  EXPECT_EQ(Find("FILE17"), std::nullopt);
  Fill(folder_);
  Make(folder_ / "Fresh");
  EXPECT_EQ(Find("FRESH"), "Fresh");
  Make(temporary_.Path() / "moved" / "Elsewhere");
  EXPECT_EQ(Find("ELSEWHERE"), std::nullopt);
}

TEST_F(FolderNamesTest, SeesThatAFolderFurtherUpWasExchanged) {
  const fs::path inner = temporary_.Path() / "outer" / "inner";
  Fill(inner);
  EXPECT_EQ(names_.Find(inner.string(), "Fresh"), std::nullopt);
  fs::rename(temporary_.Path() / "outer", temporary_.Path() / "before");
  fs::create_directories(inner);
  Make(inner / "Fresh");
  EXPECT_EQ(names_.Find(inner.string(), "FRESH"), "Fresh");
  EXPECT_EQ(names_.Find(inner.string(), "FILE17"), std::nullopt);
}

TEST_F(FolderNamesTest, ReadsTheFolderAgainAfterMoreChangesThanTheKernelNotes) {
  for (int i = 0; i < 20'000; ++i) {
    Make(folder_ / "Passing");
    fs::remove(folder_ / "Passing");
  }
  Make(folder_ / "Last");
  EXPECT_EQ(Find("LAST"), "Last");
  EXPECT_EQ(Find("PASSING"), std::nullopt);
  Make(folder_ / "Later");
  EXPECT_EQ(Find("LATER"), "Later");
}

TEST_F(FolderNamesTest, FollowsMoreFoldersThanItKeeps) {
  for (int round = 0; round < 2; ++round) {
    for (int i = 0; i < 7; ++i) {
      const fs::path folder = temporary_.Path() / std::to_string(i);
      if (round == 0) Fill(folder);
      EXPECT_EQ(names_.Find(folder.string(), "None"), std::nullopt);
      const std::string name = "Round" + std::to_string(round);
      Make(folder / name);
      EXPECT_EQ(names_.Find(folder.string(), "rOUND" + std::to_string(round)), name);
    }
  }
}

}  // namespace
