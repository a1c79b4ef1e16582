// Somebody sets the machine's clock while a job runs.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/e2e/demo_suite.hpp"
#include "tests/e2e/hand_made_suite.hpp"
#include "tests/e2e/host_process.hpp"

namespace {

namespace fs = std::filesystem;
using orvane_test::kDay;
using orvane_test::Outcome;
using orvane_test::RunHost;
using orvane_test::TemporaryFolder;
using testing::HasSubstr;

class ClockJumpTest : public testing::TestWithParam<long> {
 protected:
  // Runs the job with a clock that is set when it makes the folder of the run logs.
  Outcome Run(const std::string& job) {
    return RunHost({"run", "--home", home_.string(), job}, {{"LD_PRELOAD", ORVANE_CLOCK_JUMP},
                                                            {"CLOCK_JUMP_AT", logs_.string()},
                                                            {"CLOCK_JUMP_BY", std::to_string(GetParam())}});
  }

  struct Lines {
    std::string first;
    std::string last;
  };
  // Of the journals of the job.
  std::vector<Lines> JournalsOf(const std::string& job) const {
    std::vector<Lines> journals;
    for (const auto& entry : fs::directory_iterator(home_ / "journal")) {
      if (!entry.path().filename().string().ends_with("-" + job + ".jsonl")) continue;
      const std::string text = TemporaryFolder::Read(entry.path());
      journals.push_back(
          {text.substr(0, text.find('\n')), text.substr(text.rfind('\n', text.size() - 2) + 1)});
    }
    return journals;
  }

  // The text of a member.
  static std::string Member(const std::string& line, const std::string& name) {
    const std::size_t at = line.find("\"" + name + "\":");
    return at == std::string::npos ? "" : line.substr(at + name.size() + 3, 12);
  }

  TemporaryFolder folder_;
  const fs::path home_ = folder_.Path() / "home";
  const fs::path logs_ = folder_.Path() / "OrvLog";
};

TEST_P(ClockJumpTest, ARunComesToItsEndAndIsFoundAgain) {
  orvane_test::MakeDemoSuite(home_);
  for (const char* job : {"DormantUserExpiry", "CleanUp", "Archive", "SolveOnNoResponse"}) {
    SCOPED_TRACE(job);
    const Outcome outcome = Run(job);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    const std::vector<Lines> journals = JournalsOf(job);
    ASSERT_EQ(journals.size(), 1U);
    EXPECT_THAT(journals[0].last, HasSubstr("\"op\":\"run.end\",\"exit\":0"));
    EXPECT_NE(Member(journals[0].first, "time"), Member(journals[0].last, "time")) << "the clock was not set";
    // By the steady clock, not the days that the other one has gone.
    const double seconds = std::stod(Member(journals[0].last, "seconds"));
    EXPECT_GE(seconds, 0);
    EXPECT_LT(seconds, 60);
    fs::rename(logs_, folder_.Path() / job);
  }
  EXPECT_EQ(RunHost({"report", "--home", home_.string()}).exitCode, 0);
  // Nothing that the jump has left keeps the next run from its work.
  const Outcome next = RunHost({"run", "--home", home_.string(), "--no-wait", "DormantUserExpiry"});
  EXPECT_EQ(next.exitCode, 0) << next.err;
}

INSTANTIATE_TEST_SUITE_P(Jumps, ClockJumpTest, testing::Values(-kDay, 80 * kDay), [](const auto& jump) {
  return (jump.param < 0 ? "back" : "ahead") + std::to_string(std::abs(jump.param / kDay));
});

}  // namespace
