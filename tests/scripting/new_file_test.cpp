// New files on a real file tree: what lies beside them until they are closed, links, modes, full disks, and
// two writers of one name.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "platform/base/descriptor.hpp"
#include "platform/scripting/local/file_system_object.hpp"
#include "tests/support/error_number.hpp"
#include "tests/support/temporary_folder.hpp"
#include "tests/support/test_runtime.hpp"

namespace orvane_test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

class NewFileTest : public testing::Test {
 protected:
  fs::path Native(const std::string& name) const { return folder_.Path() / name; }
  std::string Bytes(const std::string& name) const { return TemporaryFolder::Read(Native(name)); }

  Scripting::TextStreamPtr Create(const std::string& name) {
    return files_.CreateTextFile(Native(name).string(), true);
  }

  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder_.Path())) {
      names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
  }

  static mode_t ModeOf(const fs::path& file) {
    struct stat status {};
    return stat(file.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
  }

  TemporaryFolder folder_;
  TestRuntime runtime_;
  Scripting::local::LocalFileSystem files_{{}};
};

TEST_F(NewFileTest, LiesBesideItsNameUntilItIsClosed) {
  const Scripting::TextStreamPtr stream = Create("a.htm");
  EXPECT_THAT(Names(), ElementsAre(".a.htm.saving"));
  stream->Close();
  EXPECT_THAT(Names(), ElementsAre("a.htm"));
}

TEST_F(NewFileTest, TakesOverWhatAKilledWriterLeft) {
  folder_.Write(".a.htm.saving", "half a pa");
  Create("a.htm")->Close();
  EXPECT_EQ(Bytes("a.htm"), "");
  EXPECT_THAT(Names(), ElementsAre("a.htm"));
}

TEST_F(NewFileTest, RemovesTheSecondFileThatAKilledWriterLeft) {
  folder_.Write(".a.htm.saving2", "half a pa");
  Create("a.htm")->Close();
  EXPECT_THAT(Names(), ElementsAre("a.htm"));
}

TEST_F(NewFileTest, SharesNoFileWithAnotherWriterThatLives) {
  const Scripting::TextStreamPtr first = Create("a.htm");
  const Scripting::TextStreamPtr second = Create("a.htm");
  EXPECT_THAT(Names(), ElementsAre(".a.htm.saving", ".a.htm.saving2"));
  first->Write("first");
  second->Write("second");
  second->Close();
  EXPECT_EQ(Bytes("a.htm"), "second");
  EXPECT_EQ(ErrorNumberOf([&] { first->Close(); }), 58);
  EXPECT_EQ(Bytes("a.htm"), "second");
  EXPECT_THAT(Names(), ElementsAre("a.htm"));
}

TEST_F(NewFileTest, LeavesAloneWhatAnotherProcessHasLocked) {
  folder_.Write(".a.htm.saving", "another's");
  const base::Descriptor other(open(Native(".a.htm.saving").c_str(), O_RDONLY | O_CLOEXEC));
  ASSERT_EQ(flock(other.Get(), LOCK_SH), 0);
  Create("a.htm")->Close();
  EXPECT_EQ(Bytes(".a.htm.saving"), "another's");
  EXPECT_THAT(Names(), ElementsAre(".a.htm.saving", "a.htm"));
}

// Every content that is ever to be seen is one writer's whole one.
TEST_F(NewFileTest, IsNeverSeenInPartsOrMixed) {
  constexpr int kRounds = 20;
  const std::size_t size = 100'000;
  folder_.Write("a.htm", std::string(size, 'a'));
  std::vector<std::thread> writers;
  for (const char letter : {'b', 'c', 'd'}) {
    writers.emplace_back([this, letter] {
      const TestRuntime runtime;
      Scripting::local::LocalFileSystem files{{}};
      for (int round = 0; round < kRounds; ++round) {
        const Scripting::TextStreamPtr stream = files.CreateTextFile(Native("a.htm").string(), true);
        for (std::size_t at = 0; at < size; at += 1000) stream->Write(std::string(1000, letter));
        stream->Close();
      }
    });
  }
  for (int look = 0; look < kRounds; ++look) {
    const std::string seen = Bytes("a.htm");
    EXPECT_EQ(seen, std::string(size, seen.empty() ? '-' : seen.front()));
  }
  for (std::thread& writer : writers) writer.join();
  EXPECT_THAT(Names(), ElementsAre("a.htm"));
}

TEST_F(NewFileTest, KeepsTheModeOfTheFileThatItOverwrites) {
  folder_.Write("a.htm", "old");
  chmod(Native("a.htm").c_str(), 0640);
  Create("a.htm")->Close();
  EXPECT_EQ(ModeOf(Native("a.htm")), 0640U);
}

TEST_F(NewFileTest, KeepsTheOwnerOfTheFileThatItOverwrites) {
  if (geteuid() != 0) GTEST_SKIP() << "needs the right to give files away";
  folder_.Write("a.htm", "old");
  ASSERT_EQ(chown(Native("a.htm").c_str(), 65534, 65533), 0);
  Create("a.htm")->Close();
  struct stat status {};
  ASSERT_EQ(stat(Native("a.htm").c_str(), &status), 0);
  EXPECT_EQ(status.st_uid, 65534U);
  EXPECT_EQ(status.st_gid, 65533U);
}

TEST_F(NewFileTest, ReplacesTheFileThatALinkLeadsTo) {
  fs::create_directory(Native("real"));
  folder_.Write("real/a.htm", "old");
  fs::create_symlink("real/a.htm", Native("middle"));
  fs::create_symlink(Native("middle"), Native("link"));
  const Scripting::TextStreamPtr stream = Create("link");
  stream->Write("new");
  EXPECT_TRUE(fs::exists(Native("real/.a.htm.saving")));
  stream->Close();
  EXPECT_EQ(Bytes("real/a.htm"), "new");
  EXPECT_TRUE(fs::is_symlink(Native("link")));
  EXPECT_TRUE(fs::is_symlink(Native("middle")));
}

TEST_F(NewFileTest, MakesTheFileThatABrokenLinkNames) {
  fs::create_symlink("target", Native("link"));
  Create("link")->Close();
  EXPECT_EQ(Bytes("target"), "");
  EXPECT_TRUE(fs::is_symlink(Native("link")));
}

TEST_F(NewFileTest, IsRefusedInPlaceOfPipesDevicesAndLinksThatLeadNowhere) {
  ASSERT_EQ(mkfifo(Native("pipe").c_str(), 0600), 0);
  fs::create_symlink("loop", Native("loop"));
  fs::create_symlink("/dev/null", Native("device"));
  for (const char* name : {"pipe", "loop", "device"}) {
    EXPECT_EQ(ErrorNumberOf([&] { Create(name); }), 70) << name;
  }
  fs::create_symlink("none/a", Native("gone"));
  EXPECT_EQ(ErrorNumberOf([&] { Create("gone"); }), 76);
  EXPECT_THAT(Names(), ElementsAre("device", "gone", "loop", "pipe"));
}

// A limit on the size of files is what a full disk looks like to one process.
class FullDisk {
 public:
  explicit FullDisk(rlim_t size) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit{size, before_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FullDisk() {
    setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, handler_);
  }
  FullDisk(const FullDisk&) = delete;
  FullDisk& operator=(const FullDisk&) = delete;

 private:
  rlimit before_{};
  void (*handler_)(int);
};

TEST_F(NewFileTest, LeavesNothingOnAFullDisk) {
  const FullDisk full(10'000);
  const Scripting::TextStreamPtr small = Create("small.htm");
  small->Write(std::string(20'000, 'x'));
  EXPECT_EQ(ErrorNumberOf([&] { small->Close(); }), 61);
  const Scripting::TextStreamPtr large = Create("large.htm");
  EXPECT_EQ(ErrorNumberOf([&] { large->Write(std::string(200'000, 'x')); }), 61);
  EXPECT_EQ(ErrorNumberOf([&] { large->Write("x"); }), 91) << "a failed write ends the stream";
  large->Close();
  EXPECT_THAT(Names(), IsEmpty());
}

TEST_F(NewFileTest, KeepsTheOldFileOnAFullDisk) {
  folder_.Write("a.htm", "old");
  const FullDisk full(10'000);
  const Scripting::TextStreamPtr stream = Create("a.htm");
  stream->Write(std::string(20'000, 'x'));
  EXPECT_EQ(ErrorNumberOf([&] { stream->Close(); }), 61);
  EXPECT_EQ(Bytes("a.htm"), "old");
  EXPECT_THAT(Names(), ElementsAre("a.htm"));
}

TEST_F(NewFileTest, IsNotMadeWhereTheSweepTookItsFileAway) {
  const Scripting::TextStreamPtr stream = Create("a.htm");
  fs::remove(Native(".a.htm.saving"));
  EXPECT_EQ(ErrorNumberOf([&] { stream->Close(); }), 76);
  EXPECT_THAT(Names(), IsEmpty());
}

}  // namespace
}  // namespace orvane_test
