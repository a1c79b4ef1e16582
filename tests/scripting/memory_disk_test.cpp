// The switches of the tree in memory; what it shares with the real one is in the conformance tests.
#include "tests/doubles/memory/memory_disk.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/scripting/file_system_object.hpp"
#include "tests/doubles/memory/registration.hpp"
#include "tests/support/error_number.hpp"
#include "tests/support/test_runtime.hpp"

namespace orvane_test {
namespace {

using automation::ErrorNumber;
using Scripting::IOMode;
using testing::ElementsAre;

class MemoryDiskTest : public testing::Test {
 protected:
  MemoryDiskTest() {
    Scripting::memory::RegisterClasses(runtime_.runtime.classes, disk_);
    files_ = automation::CreateObject<Scripting::FileSystemObject>("Scripting.FileSystemObject");
  }

  TestRuntime runtime_;
  Scripting::memory::MemoryDiskPtr disk_ = std::make_shared<Scripting::memory::MemoryDisk>();
  Scripting::FileSystemObjectPtr files_;
};

TEST_F(MemoryDiskTest, IsSharedByEveryObjectOfTheRuntime) {
  files_->CreateFolder("\\OrvLog");
  EXPECT_TRUE(automation::CreateObject<Scripting::FileSystemObject>("Scripting.FileSystemObject")
                  ->FolderExists("/orvlog"));
}

TEST_F(MemoryDiskTest, ShowsItsWholeTree) {
  disk_->AddFile("/suite/Data/HTML/b.htm");
  disk_->AddFile("/suite/Data/HTML/a.htm");
  disk_->AddDrive('C');
  disk_->AddFolder("C:\\Logs");
  EXPECT_THAT(disk_->Paths(),
              ElementsAre("\\suite", "\\suite\\Data", "\\suite\\Data\\HTML", "\\suite\\Data\\HTML\\a.htm",
                          "\\suite\\Data\\HTML\\b.htm", "C:\\Logs"));
  EXPECT_THAT(disk_->PathsUnder("\\suite\\data"),
              ElementsAre("\\suite\\Data\\HTML", "\\suite\\Data\\HTML\\a.htm", "\\suite\\Data\\HTML\\b.htm"));
}

TEST_F(MemoryDiskTest, RefusesAHeldItemEvenWithForce) {
  disk_->AddFile("/f/a", "kept");
  disk_->SetHeld("/f/a");
  EXPECT_EQ(ErrorNumberOf([&] { files_->DeleteFile("/f/a", true); }), 70);
  EXPECT_EQ(ErrorNumberOf([&] { files_->DeleteFolder("/f", true); }), 70);
  EXPECT_EQ(ErrorNumberOf([&] { files_->OpenTextFile("/f/a", IOMode::ForAppending, true); }), 70);
  EXPECT_EQ(ErrorNumberOf([&] { files_->OpenTextFile("/f/a", IOMode::ForReading, false); }), 70);
  EXPECT_EQ(disk_->Bytes("/f/a"), "kept");
  disk_->SetHeld("/f/a", false);
  files_->DeleteFolder("/f", false);
  EXPECT_FALSE(disk_->Exists("/f"));
}

TEST_F(MemoryDiskTest, EmptiesAHeldFolderButKeepsIt) {
  disk_->AddFile("/f/a");
  disk_->SetHeld("/f");
  EXPECT_EQ(ErrorNumberOf([&] { files_->DeleteFolder("/f", false); }), 70);
  EXPECT_THAT(disk_->Paths(), ElementsAre("\\f"));
}

TEST_F(MemoryDiskTest, BarsTheWayIntoAFolder) {
  disk_->AddFile("/f/a");
  disk_->SetBarred("/f");
  EXPECT_TRUE(files_->FolderExists("/f"));
  EXPECT_FALSE(files_->FileExists("/f/a"));
  EXPECT_EQ(ErrorNumberOf([&] { files_->GetFolder("/f")->Files(); }), 70);
  EXPECT_EQ(ErrorNumberOf([&] { files_->GetFolder("/f")->SubFolders(); }), 70);
  EXPECT_EQ(ErrorNumberOf([&] { files_->DeleteFile("/f/a", false); }), 70);
  EXPECT_EQ(ErrorNumberOf([&] { files_->DeleteFolder("/f", true); }), 70);
  EXPECT_EQ(ErrorNumberOf([&] { files_->CreateTextFile("/f/b", true); }), 70);
  disk_->SetBarred("/f", false);
  EXPECT_TRUE(files_->FileExists("/f/a"));
}

TEST_F(MemoryDiskTest, FailsWritesWhenTheyReachTheDisk) {
  disk_->AddFile("/log.txt", "old");
  disk_->FailWrites(ErrorNumber::DiskFull);
  const Scripting::TextStreamPtr stream = files_->OpenTextFile("/log.txt", IOMode::ForAppending, true);
  stream->WriteLine("new");
  EXPECT_EQ(ErrorNumberOf([&] { stream->Close(); }), 61);
  EXPECT_EQ(disk_->Bytes("/log.txt"), "old");
  disk_->AllowWrites();
  const Scripting::TextStreamPtr again = files_->OpenTextFile("/log.txt", IOMode::ForAppending, true);
  again->Write("new");
  again->Close();
  EXPECT_EQ(disk_->Bytes("/log.txt"), "oldnew");
}

TEST_F(MemoryDiskTest, StampsNewItemsWithTheRuntimesTime) {
  files_->CreateTextFile("/a.txt", true)->Close();
  EXPECT_EQ(files_->GetFile("/a.txt")->DateLastAccessed(), runtime_.now);
}

}  // namespace
}  // namespace orvane_test
