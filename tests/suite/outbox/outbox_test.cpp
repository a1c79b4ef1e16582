#include "suite/outbox/outbox.hpp"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

#include "platform/automation/error.hpp"
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
  try {
    AppendToOutbox(file_, "{1}\n", "Source");
    FAIL();
  } catch (const automation::Error& error) {
    EXPECT_EQ(error.Number(), 75);
    EXPECT_EQ(error.Source(), "Source");
    EXPECT_EQ(error.Description(), file_.string() + ": Is a directory");
  }
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
