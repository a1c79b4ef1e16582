#include "suite/outbox/outbox.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <system_error>
#include <thread>

#include "platform/automation/error.hpp"
#include "platform/base/descriptor.hpp"
#include "tests/support/raised_error.hpp"
#include "tests/support/temporary_folder.hpp"

namespace suite {
namespace {

class OutboxTest : public testing::Test {
 protected:
  orvane_test::TemporaryFolder folder_;
  const std::filesystem::path file_ = folder_.Path() / "outbox" / "calls.jsonl";
};

TEST_F(OutboxTest, MakesItsFolderAndAppends) {
  AppendToOutbox(file_, "{1}\n", "Source");
  AppendToOutbox(file_, "{2}\n", "Source");
  EXPECT_EQ(orvane_test::TemporaryFolder::Read(file_), "{1}\n{2}\n");
}

// A power cut in the middle of a line has left it without its end.
TEST_F(OutboxTest, BeginsANewLineBehindOneThatWasCutOff) {
  AppendToOutbox(file_, "{1}\n{2", "Source");
  AppendToOutbox(file_, "{3}\n", "Source");
  EXPECT_EQ(orvane_test::TemporaryFolder::Read(file_), "{1}\n{2\n{3}\n");
}

TEST_F(OutboxTest, AFileThatCannotBeWrittenIsNamed) {
  std::filesystem::create_directories(file_);  // a folder where the file should be
  const automation::Error error = orvane_test::ErrorOf([&] { AppendToOutbox(file_, "{1}\n", "Source"); });
  EXPECT_EQ(error.Number(), 75);
  EXPECT_EQ(error.Source(), "Source");
  EXPECT_EQ(error.Description(), file_.string() + ": Is a directory");
}

TEST_F(OutboxTest, FoldersThatMayNotBeListedTakeLinesAllTheSame) {
  const bool isRoot = geteuid() == 0;  // who may list every folder
  constexpr uid_t kNobody = 65534;
  const std::filesystem::path outbox = file_.parent_path();
  std::filesystem::create_directory(outbox);
  for (const std::filesystem::path& folder : {outbox, folder_.Path()}) {
    ASSERT_TRUE(!isRoot || chown(folder.c_str(), kNobody, static_cast<gid_t>(-1)) == 0);
    ASSERT_EQ(chmod(folder.c_str(), 0300), 0);
  }
  ASSERT_TRUE(!isRoot || seteuid(kNobody) == 0);
  EXPECT_NO_THROW(AppendToOutbox(file_, "{1}\n", "Source"));
  ASSERT_TRUE(!isRoot || seteuid(0) == 0);
  for (const std::filesystem::path& folder : {folder_.Path(), outbox}) {
    ASSERT_EQ(chmod(folder.c_str(), 0700), 0);
  }
  EXPECT_EQ(orvane_test::TemporaryFolder::Read(file_), "{1}\n");
}

TEST_F(OutboxTest, ALockIsNotWaitedForWithoutEnd) {
  AppendToOutbox(file_, "{1}\n", "Source");
  const base::Descriptor holder(open(file_.c_str(), O_RDONLY | O_CLOEXEC));
  ASSERT_EQ(flock(holder.Get(), LOCK_EX), 0);
  const automation::Error error =
      orvane_test::ErrorOf([&] { AppendToOutbox(file_, "{2}\n", "Source", std::chrono::milliseconds(50)); });
  EXPECT_EQ(error.Number(), 75);
  EXPECT_EQ(error.Source(), "Source");
  EXPECT_EQ(error.Description(), file_.string() + ": another program keeps it locked");
  EXPECT_EQ(orvane_test::TemporaryFolder::Read(file_), "{1}\n");
}

TEST_F(OutboxTest, ALockIsWaitedForAsLongAsAProgramMayNeedIt) {
  AppendToOutbox(file_, "{1}\n", "Source");
  base::Descriptor holder(open(file_.c_str(), O_RDONLY | O_CLOEXEC));
  ASSERT_EQ(flock(holder.Get(), LOCK_EX), 0);
  std::thread writer([&] { AppendToOutbox(file_, "{2}\n", "Source"); });
  // The writer has the file open, and so is about to wait or waits.
  const auto openOnes = [&] {
    long count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
      std::error_code gone;
      if (std::filesystem::read_symlink(entry.path(), gone) == file_) ++count;
    }
    return count;
  };
  while (openOnes() < 2) std::this_thread::yield();
  EXPECT_EQ(orvane_test::TemporaryFolder::Read(file_), "{1}\n");
  holder = base::Descriptor();
  writer.join();
  EXPECT_EQ(orvane_test::TemporaryFolder::Read(file_), "{1}\n{2}\n");
}

// The limit on the size of files stands in for a full disk: the line is cut short in the middle.
TEST_F(OutboxTest, HalfALineIsTakenBack) {
  AppendToOutbox(file_, "{whole}\n", "Source");
  const pid_t child = fork();
  if (child == 0) {
    signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{12, 12};
    setrlimit(RLIMIT_FSIZE, &limit);
    try {
      AppendToOutbox(file_, "{does not fit}\n", "Source");
    } catch (const automation::Error&) {
      _exit(0);
    }
    _exit(1);
  }
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  EXPECT_EQ(orvane_test::TemporaryFolder::Read(file_), "{whole}\n");
}

}  // namespace
}  // namespace suite
