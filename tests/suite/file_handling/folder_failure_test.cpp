// A shared folder, or the data folder of this machine, that cannot be looked at. Links in a circle stand for
// the troubles of a network share: they fail for the system's administrator, too.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "platform/automation/error.hpp"
#include "tests/suite/file_handling/shared_place.hpp"

namespace orvane_test {
namespace {

namespace fs = std::filesystem;
using OrvCommonMTS::FolderKind;

class FolderFailureTest : public ::testing::Test {
 protected:
  static void MakeUnreadable(const fs::path& item) { fs::create_symlink(item.filename(), item); }

  static void ExpectTrouble(const fs::path& item, const std::function<void()>& action) {
    try {
      action();
      ADD_FAILURE() << "no error";
    } catch (const automation::Error& error) {
      EXPECT_EQ(error.Number(), 75);
      EXPECT_EQ(error.Source(), "OrvCommonMTS.FileHandling");
      EXPECT_EQ(error.Description(), item.string() + ": Too many levels of symbolic links");
    }
  }

  Farm farm{"folder"};
  const automation::VariantArray archives = {std::int16_t{13}};
};

TEST_F(FolderFailureTest, ASharedFileThatCannotBeLookedAtIsNotTakenForAMissingOne) {
  farm.place.AddFolder("Archives");
  const fs::path item = farm.place.Root() / "Archives/a.xml";
  MakeUnreadable(item);
  ExpectTrouble(item, [&] { farm.Handling()->FileExists("a.xml", archives); });
  const fs::path target = farm.data.Write("Archives/other.xml", "mine");
  ExpectTrouble(item, [&] {
    farm.Handling()->FetchFile(farm.place.FtpPath(), "a.xml", target.string(), FolderKind::Archives, 10);
  });
  EXPECT_EQ(TemporaryFolder::Read(target), "mine");
}

TEST_F(FolderFailureTest, AFileOfThisMachineThatCannotBeLookedAtIsNotTakenForAMissingOne) {
  farm.data.Write("Archives/b.xml", "x");
  const fs::path item = farm.data.Path() / "Archives/a.xml";
  MakeUnreadable(item);
  ExpectTrouble(item, [&] { farm.Handling()->FileExists("a.xml", archives); });
  EXPECT_TRUE(farm.Handling()->FileExists("b.xml", archives));
}

TEST_F(FolderFailureTest, ASharedFolderThatCannotBeReadIsNotTakenForAnEmptyOne) {
  const fs::path folder = farm.place.Root() / "CHAT";
  MakeUnreadable(folder);
  ExpectTrouble(folder,
                [&] { farm.Handling()->DeleteAgedFiles(farm.place.FtpPath(), 60, FolderKind::Chat); });
}

TEST_F(FolderFailureTest, AnItemThatCannotBeLookedAtIsReportedAndTheOthersFollow) {
  farm.place.AddFile("SRATTACHMENTS/18A/gone.txt");
  const fs::path folder = farm.place.Root() / "SRATTACHMENTS/17A";
  MakeUnreadable(folder);
  try {
    farm.Handling()->DeleteListedItems(farm.place.FtpPath(),
                                       automation::VariantArray{"17A\\x\\y", "17A\\x", "18A\\gone.txt"},
                                       FolderKind::OldAttachmentFiles);
    ADD_FAILURE() << "no error";
  } catch (const automation::Error& error) {
    EXPECT_EQ(error.Description(),
              "1 of 3 items could not be deleted: 17A\\x: " + folder.string() + " is a link");
  }
  EXPECT_FALSE(fs::exists(farm.place.Root() / "SRATTACHMENTS/18A/gone.txt"));
}

}  // namespace
}  // namespace orvane_test
