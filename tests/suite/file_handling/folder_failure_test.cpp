// A shared folder, or the data folder of this machine, that cannot be looked at. Links in a circle stand for
// the troubles of a network share: they fail for the system's administrator, too.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "platform/automation/error.hpp"
#include "tests/suite/file_handling/shared_place.hpp"
#include "tests/support/raised_error.hpp"

namespace orvane_test {
namespace {

namespace fs = std::filesystem;
using OrvCommonMTS::FolderKind;

class FolderFailureTest : public ::testing::Test {
 protected:
  static void MakeUnreadable(const fs::path& item) { fs::create_symlink(item.filename(), item); }

  static void ExpectTrouble(const fs::path& item, const std::function<void()>& action) {
    ExpectError(item, "Too many levels of symbolic links", action);
  }

  static void ExpectError(const fs::path& item, const std::string& reason,
                          const std::function<void()>& action) {
    const automation::Error error = ErrorOf(action);
    EXPECT_EQ(error.Number(), 75);
    EXPECT_EQ(error.Source(), "OrvCommonMTS.FileHandling");
    EXPECT_EQ(error.Description(), item.string() + ": " + reason);
  }

  static std::vector<std::string> NamesIn(const fs::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder))
      names.push_back(entry.path().filename().string());
    return names;
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

// An open chat is written once and read for as long as it lasts.
TEST_F(FolderFailureTest, AFileThatWasReadLatelyStaysHoweverLongAgoItWasWritten) {
  const std::time_t now = std::time(nullptr);
  farm.place.AddFile("CHAT/read", "x", now - 36'000, now);
  farm.place.AddFile("CHAT/written", "x", now, now - 36'000);
  farm.place.AddFile("CHAT/neither", "x", now - 36'000, now - 36'000);
  EXPECT_EQ(farm.Handling()->DeleteAgedFiles(farm.place.FtpPath(), 60, FolderKind::Chat),
            automation::Variant(1));
  EXPECT_THAT(farm.place.Contents(), testing::ElementsAre("CHAT/", "CHAT/read", "CHAT/written"));
}

TEST_F(FolderFailureTest, ACopyThatFailsLeavesNothingBehind) {
  // There is nothing to copy.
  farm.place.AddFolder("Archives");
  const std::string source = (farm.data.Path() / "Archives/a.xml").string();
  ExpectError(farm.place.Root() / "Archives/a.xml", "No such file or directory",
              [&] { farm.Handling()->StoreFile(source, FolderKind::Archives); });
  EXPECT_THAT(farm.place.Contents(), testing::ElementsAre("Archives/"));

  // The copy is made and cannot be given its name.
  farm.data.Write("Archives/a.xml", "mine");
  farm.place.AddFolder("Archives/a.xml/inside");
  ExpectError(farm.place.Root() / "Archives/a.xml", "Is a directory",
              [&] { farm.Handling()->StoreFile(source, FolderKind::Archives); });
  EXPECT_THAT(farm.place.Contents(),
              testing::ElementsAre("Archives/", "Archives/a.xml/", "Archives/a.xml/inside/"));

  farm.place.AddFile("Archives/b.xml", "theirs");
  const fs::path target = farm.data.Path() / "Archives/b.xml";
  fs::create_directories(target / "inside");
  ExpectError(target, "Is a directory", [&] {
    farm.Handling()->FetchFile(farm.place.FtpPath(), "b.xml", target.string(), FolderKind::Archives, 10);
  });
  EXPECT_THAT(NamesIn(target.parent_path()), testing::UnorderedElementsAre("a.xml", "b.xml"));
}

TEST_F(FolderFailureTest, WhatARunThatDiedLeftGoesWithTheNextCopy) {
  farm.place.AddFile("Archives/.a.xml.saving", "half");
  farm.Handling()->StoreFile(farm.data.Write("Archives/a.xml", "mine").string(), FolderKind::Archives);
  EXPECT_THAT(farm.place.Contents(), testing::ElementsAre("Archives/", "Archives/a.xml"));
}

TEST_F(FolderFailureTest, ASharedFileThatIsMarkedAsReadOnlyStaysAsItIs) {
  farm.place.AddFile("Archives/a.xml", "theirs");
  const fs::path item = farm.place.Root() / "Archives/a.xml";
  fs::permissions(item, fs::perms::owner_read);
  const std::string source = farm.data.Write("Archives/a.xml", "mine").string();
  ExpectError(item, "Permission denied", [&] { farm.Handling()->StoreFile(source, FolderKind::Archives); });
  EXPECT_EQ(TemporaryFolder::Read(item), "theirs");
}

TEST_F(FolderFailureTest, ALinkInTheSharedFolderIsFollowed) {
  farm.place.AddFile("Archives/real.xml", "theirs");
  fs::create_symlink("real.xml", farm.place.Root() / "Archives/a.xml");
  const std::string source = farm.data.Write("Archives/a.xml", "mine").string();
  farm.Handling()->StoreFile(source, FolderKind::Archives);
  EXPECT_TRUE(fs::is_symlink(farm.place.Root() / "Archives/a.xml"));
  EXPECT_EQ(TemporaryFolder::Read(farm.place.Root() / "Archives/real.xml"), "mine");
}

}  // namespace
}  // namespace orvane_test
