// The file that "run --metrics" leaves, against the journals of the same call.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ctime>
#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>

#include "run/lock/file_lock.hpp"
#include "tests/e2e/demo_suite.hpp"
#include "tests/e2e/host_process.hpp"
#include "tests/support/temporary_folder.hpp"

namespace orvane_test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using Samples = std::map<std::string, double>;

class MetricsTest : public testing::Test {
 protected:
  MetricsTest() { MakeDemoSuite(home_); }

  Outcome Run(std::vector<std::string> jobs) const {
    jobs.insert(jobs.begin(), {"run", "--home", home_.string(), "--metrics", file_.string()});
    return RunHost(jobs);
  }
  // Every line is a comment or a sample.
  Samples Read() const {
    static const std::regex kSample(
        R"x(([a-z_]+\{job="[A-Za-z]+"(?:,op="[a-z.]+",outcome="[a-z]+")?\}) (-?[0-9.]+))x");
    Samples samples;
    std::istringstream lines(TemporaryFolder::Read(file_));
    for (std::string line; std::getline(lines, line);) {
      std::smatch match;
      if (line.starts_with("# HELP ") || line.starts_with("# TYPE ")) continue;
      EXPECT_TRUE(std::regex_match(line, match, kSample)) << line;
      EXPECT_TRUE(samples.emplace(match[1], std::stod(match[2])).second) << line;
    }
    return samples;
  }

  TemporaryFolder folder_;
  const fs::path home_ = folder_.Path() / "home";
  const fs::path file_ = folder_.Path() / "orvane.prom";
};

TEST_F(MetricsTest, SayWhatTheJournalsSay) {
  const auto before = static_cast<double>(std::time(nullptr));
  EXPECT_EQ(Run({"SolveOnNoResponse", "DormantUserExpiry"}).exitCode, 0);
  const Samples samples = Read();
  for (const char* job : {"SolveOnNoResponse", "DormantUserExpiry"}) {
    const std::string label = std::string("{job=\"") + job + "\"";
    EXPECT_EQ(samples.at("orvane_run_exit_code" + label + "}"), 0);
    EXPECT_GE(samples.at("orvane_run_start_timestamp_seconds" + label + "}"), before);
    EXPECT_GE(samples.at("orvane_run_end_timestamp_seconds" + label + "}"),
              samples.at("orvane_run_start_timestamp_seconds" + label + "}"));
    nlohmann::json end;
    for (const auto& entry : fs::directory_iterator(home_ / "journal")) {
      if (!entry.path().string().ends_with(std::string("-") + job + ".jsonl")) continue;
      std::istringstream lines(TemporaryFolder::Read(entry.path()));
      for (std::string line; std::getline(lines, line);) end = nlohmann::json::parse(line);
    }
    EXPECT_EQ(samples.at("orvane_run_duration_seconds" + label + "}"), end["seconds"].get<double>());
    for (const auto& [op, count] : end["counts"].items()) {
      if (op == "failed" || op == "unknown" || op == "log" || op == "known") continue;
      double sum = 0;
      if (count.is_number()) sum = count;
      if (count.is_object()) {
        for (const auto& [subject, number] : count.items()) sum += number.get<double>();
      }
      EXPECT_EQ(samples.at("orvane_effects_total" + label + ",op=\"" + op + "\",outcome=\"done\"}"), sum)
          << op;
    }
  }
  // One prospect of the demo has left no address, and one due reminder has no question.
  EXPECT_EQ(samples.at("orvane_mails_refused_total{job=\"SolveOnNoResponse\"}"), 1);
  EXPECT_EQ(samples.count("orvane_oldest_due_reminder_seconds{job=\"DormantUserExpiry\"}"), 0U);
  EXPECT_GT(samples.at("orvane_oldest_due_reminder_seconds{job=\"SolveOnNoResponse\"}"), 12 * 86'400);
}

TEST_F(MetricsTest, AJobThatWasNotBegunHasTheExitCodeOfTheCall) {
  const auto lock = orvane_lock::FileLock::TryTake(home_ / ".lock", orvane_lock::ThisProcess("a test"));
  EXPECT_EQ(Run({"--no-wait", "CleanUp"}).exitCode, 75);
  EXPECT_EQ(Read(), (Samples{{"orvane_run_exit_code{job=\"CleanUp\"}", 75}}));
}

TEST_F(MetricsTest, AFileThatCannotBeWrittenKeepsNoJobFromRunning) {
  const Outcome outcome = RunHost(
      {"run", "--home", home_.string(), "--metrics", (folder_.Path() / "none/x.prom").string(), "CleanUp"});
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_THAT(outcome.err, HasSubstr("warning: the metrics could not be written: "));
}

}  // namespace
}  // namespace orvane_test
