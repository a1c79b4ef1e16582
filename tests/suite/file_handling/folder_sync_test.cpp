// In which order a copy into a mounted folder, or out of it, reaches the disk. What the component calls of
// the C library is noted down on its way there.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>

#include "tests/suite/file_handling/shared_place.hpp"

namespace orvane_test {
namespace {

std::vector<std::string>* noted = nullptr;  // while a test listens

std::string NameOf(const std::string& path) {
  return std::filesystem::path(path).filename().string();
}

class FolderSyncTest : public ::testing::Test {
 protected:
  ~FolderSyncTest() override { noted = nullptr; }

  Farm farm{"folder"};
  std::vector<std::string> calls;
};

}  // namespace
}  // namespace orvane_test

extern "C" int fsync(int descriptor) {
  if (orvane_test::noted != nullptr) {
    std::array<char, 4096> path{};
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    if (readlink(link.c_str(), path.data(), path.size() - 1) > 0) {
      orvane_test::noted->push_back("sync " + orvane_test::NameOf(path.data()));
    }
  }
  return static_cast<int>(syscall(SYS_fsync, descriptor));
}

extern "C" int rename(const char* from, const char* to) noexcept {
  if (orvane_test::noted != nullptr) {
    orvane_test::noted->push_back("rename " + orvane_test::NameOf(from) + " " + orvane_test::NameOf(to));
  }
  return static_cast<int>(syscall(SYS_renameat, AT_FDCWD, from, AT_FDCWD, to));
}

namespace orvane_test {
namespace {

// Rows are deleted once the file is stored: a name on the disk without its content would be all that is left.
TEST_F(FolderSyncTest, ACopyIsSyncedBeforeItGetsItsNameAndThenTheName) {
  const std::string source = farm.data.Write("Archives/a.xml", "mine").string();
  farm.place.AddFolder("Archives");
  const auto handling = farm.Handling();
  noted = &calls;
  handling->StoreFile(source, OrvCommonMTS::FolderKind::Archives);
  EXPECT_THAT(calls, ::testing::ElementsAre("sync .a.xml.saving", "sync Archives"));
}

TEST_F(FolderSyncTest, AFetchedFileIsSyncedInTheSameOrder) {
  farm.place.AddFile("Archives/a.xml", "theirs");
  const std::string target = farm.data.Write("Archives/a.xml", "mine").string();
  const auto handling = farm.Handling();
  noted = &calls;
  handling->FetchFile(farm.place.FtpPath(), "a.xml", target, OrvCommonMTS::FolderKind::Archives, 10);
  EXPECT_THAT(calls,
              ::testing::ElementsAre("sync .a.xml.saving", "rename .a.xml.saving a.xml", "sync Archives"));
}

}  // namespace
}  // namespace orvane_test
