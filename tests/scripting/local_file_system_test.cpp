// What only a real file tree can show: links, permissions, names of any bytes, full disks.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "platform/automation/runtime.hpp"
#include "platform/locale/icu_locale.hpp"
#include "platform/scripting/local/file_system_object.hpp"
#include "platform/scripting/local/registration.hpp"
#include "tests/support/error_number.hpp"
#include "tests/support/temporary_folder.hpp"

namespace orvane_test {
namespace {

namespace fs = std::filesystem;
using Scripting::IOMode;
using testing::ElementsAre;
using testing::IsEmpty;

class LocalFileSystemTest : public testing::Test {
 protected:
  LocalFileSystemTest() : scope_(runtime_) {
    runtime_.locale = automation::MakeLocale({});
    Scripting::local::RegisterClasses(runtime_.classes);
    files_ = automation::CreateObject<Scripting::FileSystemObject>("Scripting.FileSystemObject");
  }

  fs::path Native(const std::string& path) const { return folder_.Path() / path; }
  std::string Full(const std::string& path) const { return Native(path).string(); }

  void AddFile(const std::string& path, const std::string& bytes = {}) const {
    fs::create_directories(Native(path).parent_path());
    std::ofstream(Native(path), std::ios::binary) << bytes;
  }
  bool Exists(const std::string& path) const { return fs::exists(fs::symlink_status(Native(path))); }

  std::vector<std::string> FileNames(const std::string& path) const {
    std::vector<std::string> names;
    for (const Scripting::FilePtr& file : files_->GetFolder(Full(path))->Files())
      names.push_back(file->Name());
    return names;
  }

  TemporaryFolder folder_;
  automation::Runtime runtime_;
  automation::RuntimeScope scope_;
  Scripting::FileSystemObjectPtr files_;
};

// Root may do everything, so tests of permissions step down to a user without any.
class WithoutPrivileges {
 public:
  explicit WithoutPrivileges(const fs::path& folder) {
    if (geteuid() != 0) return;
    constexpr uid_t kNobody = 65534;
    chmod(folder.c_str(), 0755);
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
      if (lchown(entry.path().c_str(), kNobody, static_cast<gid_t>(-1)) != 0) std::abort();
    }
    if (seteuid(kNobody) != 0) std::abort();
    lowered_ = true;
  }
  ~WithoutPrivileges() {
    if (lowered_ && seteuid(0) != 0) std::abort();
  }
  WithoutPrivileges(const WithoutPrivileges&) = delete;
  WithoutPrivileges& operator=(const WithoutPrivileges&) = delete;

 private:
  bool lowered_ = false;
};

// Links
// ----------------------------------------------------------------------------------------------------------

TEST_F(LocalFileSystemTest, RemovesLinksInsideAFolderAndNeverWhatTheyLeadTo) {
  AddFile("outside/kept.txt");
  AddFile("17Q/a.txt");
  fs::create_directory_symlink(Native("outside"), Native("17Q/link to folder"));
  fs::create_symlink(Native("outside/kept.txt"), Native("17Q/link to file"));
  fs::create_symlink("nowhere", Native("17Q/broken link"));
  files_->DeleteFolder(Full("17Q"), false);
  EXPECT_FALSE(Exists("17Q"));
  EXPECT_TRUE(Exists("outside/kept.txt"));
}

TEST_F(LocalFileSystemTest, DeletesAFolderThatIsALinkAsALink) {
  AddFile("outside/kept.txt");
  fs::create_directory_symlink(Native("outside"), Native("17Q"));
  EXPECT_TRUE(files_->FolderExists(Full("17Q")));
  files_->DeleteFolder(Full("17Q") + "\\", true);
  EXPECT_FALSE(Exists("17Q"));
  EXPECT_TRUE(Exists("outside/kept.txt"));
}

TEST_F(LocalFileSystemTest, TellsAFolderFromALinkToOne) {
  fs::create_directories(Native("data/18Q"));
  fs::create_directory(Native("outside"));
  fs::create_directory_symlink(Native("outside"), Native("data/17Q"));
  fs::create_directory_symlink(Native("data"), Native("Elsewhere"));
  EXPECT_TRUE(files_->GetFolder(Full("data\\17q\\"))->IsLink());
  EXPECT_FALSE(files_->GetFolder(Full("data/18Q"))->IsLink());
  // A link further up does not make a link of what is found behind it.
  EXPECT_FALSE(files_->GetFolder(Full("elsewhere/18Q"))->IsLink());
  EXPECT_TRUE(files_->GetFolder(Full("data"))->SubFolders().front()->IsLink());
  const Scripting::FolderPtr gone = files_->GetFolder(Full("data/18Q"));
  fs::remove(Native("data/18Q"));
  EXPECT_EQ(ErrorNumberOf([&] { gone->IsLink(); }), 76);
}

TEST_F(LocalFileSystemTest, DeletesAFileThatIsALinkAsALink) {
  AddFile("outside.txt");
  fs::create_directories(Native("HTML"));
  fs::create_symlink(Native("outside.txt"), Native("HTML/a.htm"));
  files_->DeleteFile(Full("HTML/a.htm"), false);
  EXPECT_FALSE(Exists("HTML/a.htm"));
  EXPECT_TRUE(Exists("outside.txt"));
}

TEST_F(LocalFileSystemTest, DeletesNoLinkToAFolderAsAFile) {
  AddFile("outside/kept.txt");
  fs::create_directory_symlink(Native("outside"), Native("link"));
  EXPECT_EQ(ErrorNumberOf([&] { files_->DeleteFile(Full("link"), true); }), 53);
  EXPECT_TRUE(Exists("link"));
}

TEST_F(LocalFileSystemTest, ListsLinksAsWhatTheyLeadToAndBrokenOnesAsFiles) {
  AddFile("f/real.txt");
  fs::create_directory(Native("f/folder"));
  fs::create_symlink("real.txt", Native("f/link to file"));
  fs::create_directory_symlink("folder", Native("f/link to folder"));
  fs::create_symlink("nowhere", Native("f/broken link"));
  EXPECT_THAT(FileNames("f"), ElementsAre("broken link", "link to file", "real.txt"));
  EXPECT_EQ(files_->GetFolder(Full("f"))->SubFolders().size(), 2U);
  EXPECT_TRUE(files_->FileExists(Full("f/broken link")));
  files_->DeleteFile(Full("f/broken link"), false);
  EXPECT_FALSE(Exists("f/broken link"));
}

// Looking where a link leads is an access to the link, so its time is seldom old.
TEST_F(LocalFileSystemTest, TellsTheLastAccessOfABrokenLinkItself) {
  fs::create_directory(Native("f"));
  fs::create_symlink("nowhere", Native("f/broken"));
  fs::create_symlink("loop", Native("f/loop"));
  fs::create_symlink("real/inside", Native("f/through a file"));
  AddFile("f/real");
  const Scripting::FileList files = files_->GetFolder(Full("f"))->Files();
  ASSERT_EQ(files.size(), 4U);
  for (const Scripting::FilePtr& file : files) {
    EXPECT_EQ(ErrorNumberOf([&] { file->DateLastAccessed(); }), 0) << file->Name();
    struct stat itself {};
    ASSERT_EQ(lstat(Native("f/" + file->Name()).c_str(), &itself), 0);
    std::tm local{};
    localtime_r(&itself.st_atim.tv_sec, &local);
    EXPECT_EQ(file->DateLastAccessed().Parts().minute, local.tm_min) << file->Name();
  }
  files_->DeleteFile(Full("f/broken"), false);
  EXPECT_EQ(ErrorNumberOf([&] { files[0]->DateLastAccessed(); }), 53);
}

TEST_F(LocalFileSystemTest, MakesNoFileThroughABrokenLinkUnlessToldToOverwrite) {
  fs::create_symlink(Native("target"), Native("link"));
  EXPECT_EQ(ErrorNumberOf([&] { files_->CreateTextFile(Full("link"), false); }), 58);
  EXPECT_FALSE(Exists("target"));
}

TEST_F(LocalFileSystemTest, NeitherListsNorOpensPipes) {
  fs::create_directory(Native("f"));
  ASSERT_EQ(mkfifo(Native("f/pipe").c_str(), 0600), 0);
  EXPECT_THAT(FileNames("f"), IsEmpty());
  EXPECT_FALSE(files_->FileExists(Full("f/pipe")));
  EXPECT_EQ(ErrorNumberOf([&] { files_->OpenTextFile(Full("f/pipe"), IOMode::ForAppending, true); }), 70);
  EXPECT_EQ(ErrorNumberOf([&] { files_->OpenTextFile(Full("f/pipe"), IOMode::ForReading, false); }), 70);
  files_->DeleteFolder(Full("f"), false);
  EXPECT_FALSE(Exists("f"));
}

// Trees
// ----------------------------------------------------------------------------------------------------------

TEST_F(LocalFileSystemTest, DeletesATreeDeeperThanOpenFilesAndPathsMayBe) {
  constexpr int kLevels = 3000;
  fs::create_directory(Native("deep"));
  int folder = open(Native("deep").c_str(), O_RDONLY | O_DIRECTORY);
  for (int level = 0; level < kLevels; ++level) {
    ASSERT_EQ(mkdirat(folder, "level", 0755), 0);
    const int next = openat(folder, "level", O_RDONLY | O_DIRECTORY);
    ASSERT_GE(next, 0);
    close(folder);
    folder = next;
  }
  close(folder);
  files_->DeleteFolder(Full("deep"), false);
  EXPECT_FALSE(Exists("deep"));
}

TEST_F(LocalFileSystemTest, DeletesNotWhereItMayNotWrite) {
  AddFile("f/a");
  AddFile("f/sub/b");
  const WithoutPrivileges user(folder_.Path());
  chmod(Native("f/sub").c_str(), 0100);  // no listing
  EXPECT_EQ(ErrorNumberOf([&] { files_->DeleteFolder(Full("f/sub"), false); }), 70);
  chmod(Native("f").c_str(), 0500);
  EXPECT_EQ(ErrorNumberOf([&] { files_->DeleteFile(Full("f/a"), true); }), 70);
  EXPECT_EQ(ErrorNumberOf([&] { files_->CreateTextFile(Full("f/new"), true); }), 70);
  EXPECT_EQ(ErrorNumberOf([&] { files_->CreateFolder(Full("f/new")); }), 70);
  EXPECT_TRUE(Exists("f/a"));
  chmod(Native("f").c_str(), 0700);
  chmod(Native("f/sub").c_str(), 0700);
}

TEST_F(LocalFileSystemTest, RaisesWhatItMayNotLookAtButCallsItMissingWhenOnlyAsked) {
  AddFile("f/a");
  const WithoutPrivileges user(folder_.Path());
  chmod(Native("f").c_str(), 0);
  EXPECT_EQ(ErrorNumberOf([&] { FileNames("f"); }), 70);
  EXPECT_EQ(ErrorNumberOf([&] { files_->GetFile(Full("f/a")); }), 70);
  EXPECT_EQ(ErrorNumberOf([&] { files_->DeleteFile(Full("f/a"), false); }), 70);
  EXPECT_FALSE(files_->FileExists(Full("f/a")));
  EXPECT_FALSE(files_->FolderExists(Full("f/sub")));
  chmod(Native("f").c_str(), 0700);
}

// Names
// ----------------------------------------------------------------------------------------------------------

TEST_F(LocalFileSystemTest, DeletesAFileWhoseNameHoldsABackslashAndNothingElse) {
  AddFile("f/a/b.txt");
  AddFile("f/a\\b.txt");
  AddFile("f/..\\..\\kept.txt");
  AddFile("kept.txt");
  const std::vector<std::string> names = FileNames("f");
  ASSERT_EQ(names.size(), 2U);
  for (const std::string& name : names) files_->DeleteFile(Full("f") + "\\" + name, false);
  EXPECT_THAT(FileNames("f"), IsEmpty());
  EXPECT_TRUE(Exists("f/a/b.txt"));
  EXPECT_TRUE(Exists("kept.txt"));
}

TEST_F(LocalFileSystemTest, DeletesFilesWhoseNamesAreNoUtf8) {
  AddFile("f/gr\xFC\xDF.txt");
  AddFile("f/\xFF");
  const std::vector<std::string> names = FileNames("f");
  EXPECT_THAT(names, ElementsAre("gr\xEF\x83\xBC\xEF\x83\x9F.txt", "\xEF\x83\xBF"));
  for (const std::string& name : names) files_->DeleteFile(Full("f") + "\\" + name, false);
  EXPECT_THAT(FileNames("f"), IsEmpty());
}

TEST_F(LocalFileSystemTest, FindsLettersBeyondAsciiWithoutRegardToCase) {
  AddFile(
      "\xC3\x9C"
      "ber/STRASSE\xC3\x89.TXT");  // Über/STRASSEÉ.TXT
  EXPECT_TRUE(
      files_->FileExists(Full("\xC3\xBC"
                              "BER\\strasse\xC3\xA9.txt")));  // üBER\strasseé.txt
  EXPECT_FALSE(files_->FileExists(Full("uber\\strassee.txt")));
}

class LargeFolderTest : public LocalFileSystemTest {
 protected:
  LargeFolderTest() {
    for (int i = 0; i < 300; ++i) AddFile("f/" + std::to_string(i) + "Q");
    AddFile("f/a");
    AddFile("f/A");
    // Old enough for its time stamp to tell every change from now on.
    const timespec times[2] = {{1'000'000'000, 0}, {1'000'000'000, 0}};
    utimensat(AT_FDCWD, Native("f").c_str(), times, 0);
  }
  bool Known(const std::string& name) const { return files_->FileExists(Full("f") + "\\" + name); }
};

TEST_F(LargeFolderTest, SeesWhatSomebodyElseAddsAndRemoves) {
  EXPECT_TRUE(Known("17q"));
  EXPECT_FALSE(Known("NEW"));
  AddFile("f/new");
  EXPECT_TRUE(Known("NEW"));
  fs::remove(Native("f/new"));
  fs::remove(Native("f/17Q"));
  EXPECT_FALSE(Known("NEW"));
  EXPECT_FALSE(Known("17q"));
}

TEST_F(LargeFolderTest, SeesWhatItDeletesItself) {
  EXPECT_FALSE(Known("missing"));
  files_->DeleteFile(Full("f\\17q"), false);
  EXPECT_FALSE(Known("17q"));
  EXPECT_TRUE(Known("18q"));
  files_->DeleteFile(Full("f\\18Q"), false);
  EXPECT_FALSE(Known("18q"));
  files_->DeleteFile(Full("f\\A"), false);
  EXPECT_TRUE(Known("A")) << "the other spelling is still there";
  files_->DeleteFile(Full("f\\A"), false);
  EXPECT_FALSE(Known("A"));
}

TEST_F(LargeFolderTest, SeesItsOwnNewFilesInEverySpelling) {
  EXPECT_FALSE(Known("NEW"));
  files_->CreateTextFile(Full("f\\new"), false)->Close();
  EXPECT_TRUE(Known("NEW"));
}

TEST_F(LocalFileSystemTest, FindsItemAfterItemInAFolderOfOtherCase) {
  AddFile("CHAT/one");
  AddFile("CHAT/two");
  files_->DeleteFile(Full("chat/one"), false);
  files_->DeleteFile(Full("chat/TWO"), false);
  EXPECT_THAT(FileNames("CHAT"), IsEmpty());
  AddFile("CHAT/three");
  AddFile("chat/four");
  EXPECT_FALSE(files_->FileExists(Full("chat/three"))) << "the exact folder comes first";
  EXPECT_TRUE(files_->FileExists(Full("chat/four")));
}

TEST_F(LocalFileSystemTest, ResolvesARelativePathFromTheCurrentFolder) {
  AddFile("f/A.txt");
  const fs::path before = fs::current_path();
  fs::current_path(folder_.Path());
  const Scripting::FilePtr file = files_->GetFile("F\\a.TXT");
  const std::string path = file->Path();
  const bool bare = files_->FolderExists("f");
  fs::current_path(before);
  std::string expected = Full("f/A.txt");
  std::replace(expected.begin(), expected.end(), '/', '\\');
  EXPECT_EQ(path, expected);
  EXPECT_TRUE(bare);
}

// Text files
// -----------------------------------------------------------------------------------------------------

TEST_F(LocalFileSystemTest, WritesWindows1252) {
  const Scripting::TextStreamPtr stream = files_->CreateTextFile(Full("a.txt"), true);
  stream->WriteLine("M\xC3\xBCller \xE2\x82\xAC \xE6\x97\xA5");
  stream->Close();
  std::string bytes;
  std::getline(std::ifstream(Native("a.txt"), std::ios::binary), bytes, '\0');
  EXPECT_EQ(bytes, "M\xFCller \x80 ?\r\n");
  EXPECT_EQ(files_->OpenTextFile(Full("a.txt"), IOMode::ForReading, false)->ReadAll(),
            "M\xC3\xBCller \xE2\x82\xAC ?\r\n");
}

TEST_F(LocalFileSystemTest, ReportsAFullDiskWhenTheStreamIsClosed) {
  const Scripting::TextStreamPtr stream = files_->OpenTextFile("/dev/full", IOMode::ForAppending, false);
  stream->WriteLine("does not fit");
  EXPECT_EQ(ErrorNumberOf([&] { stream->Close(); }), 61);
  stream->Close();
}

TEST_F(LocalFileSystemTest, ReportsAFullDiskAtAWriteThatIsTooLongToKeep) {
  const Scripting::TextStreamPtr stream = files_->OpenTextFile("/dev/full", IOMode::ForAppending, false);
  EXPECT_EQ(ErrorNumberOf([&] { stream->Write(std::string(1'000'000, 'x')); }), 61);
}

TEST_F(LocalFileSystemTest, TwoAppendersLeaveBothTextsWhole) {
  const Scripting::TextStreamPtr first = files_->OpenTextFile(Full("log.txt"), IOMode::ForAppending, true);
  const Scripting::TextStreamPtr second = files_->OpenTextFile(Full("log.txt"), IOMode::ForAppending, true);
  first->WriteLine("one");
  second->WriteLine("two");
  first->WriteLine("three");
  second->Close();
  first->Close();
  EXPECT_EQ(files_->OpenTextFile(Full("log.txt"), IOMode::ForReading, false)->ReadAll(),
            "two\r\none\r\nthree\r\n");
}

}  // namespace
}  // namespace orvane_test
