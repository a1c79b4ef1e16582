// Two runs of a suite that are let go at the same moment: with the lock they come out as one after the other
// does. Every pair of jobs in turn, on every engine; some pairs in everyday tests, all of them over and over
// in the soak tests.
#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/adodb/engines/sqlite/embedded/provider.hpp"
#include "run/lock/file_lock.hpp"
#include "tests/e2e/host_process.hpp"
#include "tests/servers/server_database.hpp"
#include "tests/support/temporary_folder.hpp"

namespace orvane_test {
namespace {

namespace fs = std::filesystem;
using Strings = std::vector<std::string>;

const Strings kJobs{"Archive", "SolveOnNoResponse", "CleanUp", "DormantUserExpiry"};

// Those that were seen to hurt each other come first.
std::vector<std::pair<std::string, std::string>> Pairs() {
  std::vector<std::pair<std::string, std::string>> pairs{{kJobs[0], kJobs[0]}, {kJobs[1], kJobs[2]}};
  for (std::size_t i = 0; i < kJobs.size(); ++i) {
    for (std::size_t j = i; j < kJobs.size(); ++j) {
      const std::pair pair(kJobs[i], kJobs[j]);
      if (pair != pairs[0] && pair != pairs[1]) pairs.push_back(pair);
    }
  }
  return pairs;
}

int Trials() {
  return std::getenv("ORVANE_SOAK") != nullptr ? 50 : 2;
}

// A demo suite on an engine, and what is to be seen of it.
class DemoSuite {
 public:
  explicit DemoSuite(const std::string& engine) {
    Strings words{"init", home_.string(), "--demo"};
    if (engine != "sqlite") {
      suite_ = std::make_unique<ServerDatabase>(engine);
      catalogue_ = std::make_unique<ServerDatabase>(engine);
      words.insert(words.end(),
                   {"--database", suite_->ConnectionString(), "--catalog", catalogue_->ConnectionString()});
    }
    const Outcome made = RunHost(words);
    EXPECT_EQ(made.exitCode, 0) << made.err;
  }

  Strings Run(const std::string& job) const { return {"run", "--home", home_.string(), job}; }
  std::unique_ptr<orvane_lock::FileLock> Hold() const {
    return orvane_lock::FileLock::TryTake(home_ / ".lock", orvane_lock::ThisProcess("a test"));
  }

  std::map<std::string, long> Counts() const {
    const auto session = suite_ ? suite_->Connect()
                                : ADODB::sqlite::MakeProvider(home_)->Connect(
                                      ADODB::engine::ConnectionString::Parse("Data Source=db/orvane.sqlite"));
    const auto rows = [&](const std::string& from) {
      const auto result = session->Query("SELECT count(*) FROM " + from, {});
      return result->Next() ? static_cast<long>(automation::ToInt64(result->Value(0))) : -1;
    };
    return {{"customers", rows("PROSPECT")},
            {"concluded", rows("QUESTIONS WHERE Q_STATUS = 160")},
            {"waiting", rows("REMINDER WHERE R_STATUS = 150")},
            {"transactions", rows("TRANSACTIONS")},
            {"not archived", rows("QUESTIONHISTORY")},
            {"previews", rows("PREVIEW")},
            {"attachments", rows("DATAFILES")},
            {"chats", rows("CHATSESSIONS")},
            {"archived", Occurrences("<SR ", "_SR.xml")},
            {"archived transactions", Occurrences("<Transaction>", "_trans.xml")},
            {"mails", Files(home_ / "mail/pickup")},
            // Named after the second, so that their number depends on how fast the run was.
            {"any page", Files(home_ / "Data/HTML") > 0 ? 1 : 0},
            {"chat files", Files(home_ / "Data/CHAT")}};
  }

 private:
  static long Files(const fs::path& folder) {
    const auto entries = fs::directory_iterator(folder);
    return std::distance(begin(entries), end(entries));
  }
  long Occurrences(const std::string& text, const std::string& ending) const {
    long count = 0;
    for (const auto& entry : fs::recursive_directory_iterator(home_ / "Data/Archives")) {
      if (!entry.path().string().ends_with(ending)) continue;
      const std::string content = TemporaryFolder::Read(entry.path());
      for (std::size_t at = 0; (at = content.find(text, at)) != std::string::npos; ++at) ++count;
    }
    return count;
  }

  TemporaryFolder folder_;
  const fs::path home_ = folder_.Path() / "home";
  std::unique_ptr<ServerDatabase> suite_;
  std::unique_ptr<ServerDatabase> catalogue_;
};

class TwoRunsTest : public testing::TestWithParam<std::string> {};

TEST_P(TwoRunsTest, ComeOutAsOneAfterTheOther) {
  const DemoSuite alone(GetParam());
  for (const std::string& job : kJobs) ASSERT_EQ(RunHost(alone.Run(job)).exitCode, 0) << job;
  const auto expected = alone.Counts();
  ASSERT_EQ(expected.at("archived"), 174);
  ASSERT_GT(expected.at("archived transactions"), 174);
  ASSERT_EQ(expected.at("mails"), 11);

  const auto pairs = Pairs();
  for (int trial = 0; trial < Trials() && !HasFailure(); ++trial) {
    const auto& [one, other] = pairs[static_cast<std::size_t>(trial) % pairs.size()];
    SCOPED_TRACE("trial " + std::to_string(trial) + ": " + one + " beside " + other);
    const DemoSuite suite(GetParam());
    // Both have begun before either may work: one that is started first could be through before the other
    // begins.
    auto held = suite.Hold();
    RunningHost first(suite.Run(one));
    RunningHost second(suite.Run(other));
    first.AwaitError("; waiting\n");
    second.AwaitError("; waiting\n");
    held.reset();
    const Outcome outcomes[] = {first.Wait(), second.Wait()};
    for (const Outcome& outcome : outcomes) EXPECT_EQ(outcome.exitCode, 0) << outcome.out << outcome.err;
    for (const std::string& job : kJobs) {
      if (job == one || job == other) continue;
      EXPECT_EQ(RunHost(suite.Run(job)).exitCode, 0) << job;
    }
    EXPECT_EQ(suite.Counts(), expected);
  }
  std::cout << "soak: " << GetParam() << ": " << Trials() << " pairs\n";
}

INSTANTIATE_TEST_SUITE_P(Engines, TwoRunsTest, testing::Values("sqlite", "postgresql", "mariadb"),
                         [](const auto& engine) { return engine.param; });

}  // namespace
}  // namespace orvane_test
