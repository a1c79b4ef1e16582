// What a service host of somebody else has of the library.
#include "run/run_job.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "components/interfaces/file_handling.hpp"
#include "components/interfaces/job.hpp"
#include "components/interfaces/log.hpp"
#include "host/commands.hpp"
#include "platform/automation/runtime.hpp"
#include "run/job_table.hpp"
#include "run/lock/file_lock.hpp"
#include "run/run_jobs.hpp"
#include "suite/composition/register_suite.hpp"
#include "suite/composition/suite_home.hpp"
#include "tests/support/raised_error.hpp"
#include "tests/support/temporary_folder.hpp"

namespace {

namespace fs = std::filesystem;
using orvane::MessageKind;
using orvane::RunOptions;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::Pair;

// A demo suite that was made once; every test has a copy.
const fs::path& MadeSuite() {
  static const orvane_test::TemporaryFolder folder;
  static const fs::path home = [] {
    orvane::host::Arguments arguments;
    arguments.home = folder.Path() / "home";
    arguments.demo = true;
    std::ostringstream output;
    EXPECT_EQ(orvane::host::InitSuite(arguments, {output, output}), 0) << output.str();
    return arguments.home;
  }();
  return home;
}

class OwnLog final : public Vantrel::Log {
 public:
  explicit OwnLog(std::vector<std::string>& entries) : entries_(entries) {}

  void WriteLogEntry(std::string_view, std::string_view message, std::int32_t,
                     automation::Variant& result) override {
    entries_.emplace_back(message);
    result = true;
  }

 private:
  std::vector<std::string>& entries_;
};

class FailingLog final : public Vantrel::Log {
 public:
  void WriteLogEntry(std::string_view, std::string_view, std::int32_t, automation::Variant&) override {
    throw std::runtime_error("the log is out of order");
  }
};

// Hands files on as the suite's component does on a web farm, by looking at them.
class OwnFileHandling final : public OrvCommonMTS::FileHandling {
 public:
  explicit OwnFileHandling(std::vector<std::string>& missing) : missing_(missing) {}

  bool FileExists(std::string_view, const automation::VariantArray&) override { return false; }
  void SetInUse(std::string_view, std::int16_t) override {}
  void FetchFile(std::string_view, std::string_view, std::string_view, OrvCommonMTS::FolderKind,
                 std::int16_t) override {}
  bool IsInUse(std::string_view) override { return false; }
  void StoreFile(std::string_view fullPath, OrvCommonMTS::FolderKind) override {
    std::string path(fullPath);
    std::replace(path.begin(), path.end(), '\\', '/');
    if (!fs::exists(path)) missing_.push_back(path);
  }
  automation::Variant DeleteAgedFiles(std::string_view, std::int32_t, OrvCommonMTS::FolderKind) override {
    return 0;
  }
  automation::Variant DeleteListedItems(std::string_view, const automation::Variant&,
                                        OrvCommonMTS::FolderKind) override {
    return 0;
  }

 private:
  std::vector<std::string>& missing_;
};

class RunJobTest : public testing::Test {
 protected:
  RunJobTest() {
    fs::copy(MadeSuite(), home_.Path(), fs::copy_options::recursive);
    options_.home = home_.Path();
    options_.job = "OrvaneProcess.DormantUserExpiry";
    options_.tell = [this](MessageKind kind, std::string_view text) { told_.emplace_back(kind, text); };
  }

  std::vector<fs::path> Journals() const {
    std::vector<fs::path> files;
    std::error_code none;
    for (const auto& entry : fs::directory_iterator(home_.Journals(), none)) {
      if (entry.path().extension() == ".jsonl") files.push_back(entry.path());
    }
    return files;
  }
  std::string RunLogs() const {
    std::string text;
    std::error_code none;
    for (const auto& entry : fs::directory_iterator(home_.Logs(), none)) {
      if (entry.path() != home_.ErrorLog()) text += orvane_test::TemporaryFolder::Read(entry.path());
    }
    return text;
  }

  orvane_test::TemporaryFolder folder_;
  const orvane::SuiteHome home_{folder_.Path() / "home"};
  RunOptions options_;
  std::vector<std::pair<MessageKind, std::string>> told_;
};

TEST_F(RunJobTest, RunsAJobAndKeepsItsJournal) {
  EXPECT_EQ(orvane::RunJob(options_), orvane::kOk);
  EXPECT_THAT(told_, Contains(Pair(MessageKind::Outcome,
                                   testing::StartsWith("OrvaneProcess.DormantUserExpiry: finished in "))));
  ASSERT_EQ(Journals().size(), 1U);
  EXPECT_THAT(orvane_test::TemporaryFolder::Read(Journals()[0]), HasSubstr("\"op\":\"row.delete\""));
  EXPECT_EQ(orvane_lock::FileLock::HolderOf(home_.Lock()), std::nullopt);
}

TEST_F(RunJobTest, SaysOfAJobOrALimitThatIsNoneThatItIsNone) {
  options_.job = "OrvaneProcess.Tidy";
  EXPECT_EQ(orvane::RunJob(options_), orvane::kUsage);
  options_.job = "Archive";
  options_.limit = "many";
  EXPECT_EQ(orvane::RunJob(options_), orvane::kUsage);
  EXPECT_EQ(told_.size(), 2U);
  EXPECT_THAT(Journals(), IsEmpty());
}

TEST_F(RunJobTest, SaysWhatIsWrongWithAConfiguration) {
  fs::remove(home_.SiteConfiguration());
  EXPECT_EQ(orvane::RunJob(options_), orvane::kConfiguration);
  EXPECT_THAT(told_, Contains(Pair(MessageKind::Error, HasSubstr("siteConfiguration.xml"))));
}

TEST_F(RunJobTest, WritesToTheLogOfTheCaller) {
  std::vector<std::string> entries;
  options_.job = "CleanUp";
  options_.classes.Register(Vantrel::kLogProgId, [&entries] { return std::make_shared<OwnLog>(entries); });
  EXPECT_EQ(orvane::RunJob(options_), orvane::kOk);
  EXPECT_THAT(entries, Contains(HasSubstr("Object required")));
  EXPECT_FALSE(fs::exists(home_.ErrorLog()));
  // They are recorded all the same.
  ASSERT_EQ(Journals().size(), 1U);
  EXPECT_THAT(orvane_test::TemporaryFolder::Read(Journals()[0]), HasSubstr("\"op\":\"log\""));
  EXPECT_THAT(told_, Contains(Pair(MessageKind::Note, HasSubstr("Object required"))));
}

TEST_F(RunJobTest, GoesOnWithALogThatRaises) {
  options_.job = "SolveOnNoResponse";
  options_.classes.Register(Vantrel::kLogProgId, [] { return std::make_shared<FailingLog>(); });
  EXPECT_EQ(orvane::RunJob(options_), orvane::kOk);
  EXPECT_THAT(RunLogs(), HasSubstr("Stopped at : "));
}

// Its sweeps report through the log, and by the job's rules a report that fails ends it.
TEST_F(RunJobTest, SaysThatALogEndedTheCleanUp) {
  options_.job = "CleanUp";
  RunOptions withoutLog = options_;
  options_.classes.Register(Vantrel::kLogProgId, [] { return std::make_shared<FailingLog>(); });
  withoutLog.classes.Register(Vantrel::kLogProgId,
                              []() -> automation::ObjectPtr { throw std::runtime_error("there is no log"); });
  EXPECT_EQ(orvane::RunJob(options_), orvane::kUnfinished);
  EXPECT_THAT(told_, Contains(Pair(MessageKind::Error, HasSubstr("the log is out of order"))));
  EXPECT_EQ(orvane::RunJob(withoutLog), orvane::kUnfinished);
  EXPECT_THAT(told_, Contains(Pair(MessageKind::Error, HasSubstr("there is no log"))));
  options_.classes = {};
  EXPECT_EQ(orvane::RunJob(options_), orvane::kOk) << "nothing stands in the way of the next run";
}

TEST_F(RunJobTest, CallsAWorkMethodOfTheCallersChoice) {
  options_.job = "Archive";
  options_.call = [](const automation::ObjectPtr& job) {
    automation::As<OrvaneProcess::ArchiveService>(job)->archiveQuestions("Service", "by hand");
  };
  EXPECT_EQ(orvane::RunJob(options_), orvane::kOk);
  EXPECT_THAT(RunLogs(), HasSubstr("Archiving Process ended."));

  // Without the lines that Run writes.
  options_.job = "SolveOnNoResponse";
  options_.call = [](const automation::ObjectPtr& job) {
    automation::As<OrvaneProcess::SolveOnNoResponseService>(job)->SolveOnNoResponse(0);
  };
  EXPECT_EQ(orvane::RunJob(options_), orvane::kOk);
  EXPECT_THAT(RunLogs(), Not(HasSubstr("Solve On No Response")));
  EXPECT_FALSE(fs::is_empty(home_.Path() / "mail" / "pickup"));
}

TEST_F(RunJobTest, AComponentOfTheCallersFindsTheFilesThatItIsTold) {
  std::vector<std::string> missing;
  options_.job = "Archive";
  options_.classes.Register(OrvCommonMTS::kFileHandlingProgId,
                            [&missing] { return std::make_shared<OwnFileHandling>(missing); });
  EXPECT_EQ(orvane::RunJob(options_), orvane::kOk);
  EXPECT_FALSE(fs::is_empty(home_.Path() / "Data/Archives"));
  EXPECT_THAT(missing, IsEmpty());
}

TEST_F(RunJobTest, TellsWhatACallRaises) {
  options_.call = [](const automation::ObjectPtr& job) {
    automation::As<OrvaneProcess::ArchiveService>(job)->archiveQuestions("Service", "of another class");
  };
  EXPECT_EQ(orvane::RunJob(options_), orvane::kUnfinished);
  EXPECT_THAT(told_, Contains(Pair(MessageKind::Error, HasSubstr("ended by: "))));
}

TEST_F(RunJobTest, RaisesNothingWhateverItsCallerDoes) {
  options_.tell = [](MessageKind, std::string_view) { throw 1; };
  EXPECT_EQ(orvane::RunJob(options_), orvane::kOk);
  options_.preview = true;
  options_.line = [](std::string_view) { throw 1; };
  EXPECT_EQ(orvane::RunJob(options_), orvane::kUnfinished);
}

TEST_F(RunJobTest, APeerThatHangsUpDoesNotEndTheProcess) {
  EXPECT_EXIT(
      {
        options_.call = [](const automation::ObjectPtr&) { std::raise(SIGPIPE); };
        const int exitCode = orvane::RunJob(options_);
        sigset_t pending;
        sigpending(&pending);
        std::_Exit(sigismember(&pending, SIGPIPE) == 1 ? 1 : exitCode);
      },
      testing::ExitedWithCode(orvane::kOk), "");
}

TEST_F(RunJobTest, TheJournalsAreForOwnerAndGroupWhateverTheUmask) {
  const mode_t before = umask(0);
  EXPECT_EQ(orvane::RunJob(options_), orvane::kOk);
  umask(before);
  EXPECT_EQ(fs::status(home_.Journals()).permissions(), fs::perms(0750));
  ASSERT_EQ(Journals().size(), 1U);
  EXPECT_EQ(fs::status(Journals()[0]).permissions(), fs::perms(0600));
}

TEST_F(RunJobTest, BeginsNothingThatALimitForbids) {
  options_.limit = "0";
  EXPECT_EQ(orvane::RunJob(options_), orvane::kLimit);
  EXPECT_THAT(told_, Contains(Pair(MessageKind::Error, HasSubstr("rows of PROSPECT"))));
  EXPECT_THAT(RunLogs(), IsEmpty());
}

TEST_F(RunJobTest, WaitsForWhoHoldsTheSuiteUntilItIsToldNotTo) {
  const auto held = orvane_lock::FileLock::TryTake(home_.Lock(), orvane_lock::ThisProcess("a test"));
  ASSERT_NE(held, nullptr);
  options_.wait = std::chrono::seconds(0);
  EXPECT_EQ(orvane::RunJob(options_), orvane::kTryAgain);
  options_.wait = std::nullopt;
  int asked = 0;
  options_.stop = [&asked] { return ++asked > 1; };
  EXPECT_EQ(orvane::RunJob(options_), orvane::kTryAgain);
  EXPECT_THAT(told_, Contains(Pair(MessageKind::Error, HasSubstr("asked to stop while waiting"))));
  EXPECT_THAT(RunLogs(), IsEmpty());
}

TEST_F(RunJobTest, EndsTheProcessAtASafePointWhenItIsToStop) {
  EXPECT_EXIT(
      {
        int asked = 0;
        options_.stop = [&asked] { return ++asked > 3; };
        options_.leave = [](int exitCode) { std::_Exit(exitCode + 100); };
        orvane::RunJob(options_);
      },
      testing::ExitedWithCode(orvane::kTryAgain + 100), "");
  ASSERT_EQ(Journals().size(), 1U);
  const std::string journal = orvane_test::TemporaryFolder::Read(Journals()[0]);
  EXPECT_THAT(journal, HasSubstr("\"op\":\"row.delete\""));
  EXPECT_THAT(journal, HasSubstr("\"op\":\"run.end\",\"exit\":75"));
}

TEST_F(RunJobTest, EndsAtASafePointAlsoWhenTheLastWordIsAnError) {
  EXPECT_EXIT(
      {
        int asked = 0;
        options_.stop = [&asked] { return ++asked > 3; };
        options_.leave = [](int) { throw std::runtime_error("no last word"); };
        orvane::RunJob(options_);
        std::_Exit(0);
      },
      testing::ExitedWithCode(orvane::kTryAgain), "");
}

// The first job ends with an error; the second is asked to stop while its limit is checked.
TEST_F(RunJobTest, StopsWhileALimitIsCheckedAndKeepsTheGraverCode) {
  EXPECT_EXIT(
      {
        bool ended = false;
        int asked = 0;
        options_.limit = "100%";
        options_.tell = [&ended](MessageKind kind, std::string_view text) {
          ended = ended || kind == MessageKind::Outcome;
          std::cerr << text << std::endl;
        };
        options_.stop = [&] { return ended && ++asked > 1; };
        options_.call = [](const automation::ObjectPtr& job) {
          if (dynamic_cast<OrvaneProcess::CleanUpService*>(job.get()) != nullptr) throw 1;
          automation::As<OrvaneProcess::Job>(job)->Run();
        };
        std::_Exit(orvane::RunJobs({orvane::FindJob("CleanUp"), orvane::FindJob("DormantUserExpiry")},
                                   options_, {}));
      },
      testing::ExitedWithCode(orvane::kUnfinished), "nothing was begun: asked to stop");
  EXPECT_EQ(Journals().size(), 1U);
}

TEST_F(RunJobTest, APreviewIsStoppedToo) {
  EXPECT_EXIT(
      {
        int asked = 0;
        options_.preview = true;
        options_.stop = [&asked] { return ++asked > 3; };
        orvane::RunJob(options_);
        std::_Exit(0);
      },
      testing::ExitedWithCode(orvane::kTryAgain), "");
}

TEST_F(RunJobTest, PreviewsWithoutACallersComponentThatCouldChangeSomething) {
  std::vector<std::string> entries;
  std::vector<std::string> lines;
  options_.job = "CleanUp";
  options_.preview = true;
  options_.line = [&lines](std::string_view line) { lines.emplace_back(line); };
  options_.classes.Register(Vantrel::kLogProgId, [&entries] { return std::make_shared<OwnLog>(entries); });
  EXPECT_EQ(orvane::RunJob(options_), orvane::kOk);
  EXPECT_THAT(entries, IsEmpty());
  EXPECT_THAT(lines, Contains(HasSubstr("\"op\":\"log\"")));
  EXPECT_THAT(lines, Contains(HasSubstr("delete")));
  EXPECT_THAT(Journals(), IsEmpty());
  EXPECT_THAT(RunLogs(), IsEmpty());
}

TEST_F(RunJobTest, WithoutASuiteThereIsNoJob) {
  automation::Runtime runtime;
  EXPECT_EQ(orvane_test::ErrorOf([] { automation::CreateObject("OrvaneProcess.Archive"); }).Number(), 91)
      << "no runtime";
  const automation::RuntimeScope scope(runtime);
  EXPECT_EQ(orvane_test::ErrorOf([] { automation::CreateObject("OrvaneProcess.Archive"); }).Number(), 429);
}

TEST_F(RunJobTest, ASuiteIsRegisteredOnceAndLeavesTheCallersClassesAlone) {
  std::vector<std::string> entries;
  automation::Runtime runtime;
  runtime.classes.Register("vantrel.log", [&entries] { return std::make_shared<OwnLog>(entries); });
  orvane::RegisterSuite(runtime, home_.Path());
  EXPECT_EQ(orvane_test::ErrorOf([&] { orvane::RegisterSuite(runtime, home_.Path()); }).Number(), 457);
  const automation::RuntimeScope scope(runtime);
  automation::CreateObject<OrvaneProcess::Job>("OrvaneProcess.CleanUp")->Run();
  EXPECT_THAT(entries, Contains(HasSubstr("Object required")));
  EXPECT_FALSE(fs::exists(home_.ErrorLog()));
}

}  // namespace
