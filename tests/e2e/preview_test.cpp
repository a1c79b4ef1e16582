// A preview says what the run that follows does, and changes nothing itself: suites made by a seed, with
// files and rows among them that make sweeps and customers fail.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <random>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "tests/e2e/host_process.hpp"
#include "tests/support/temporary_folder.hpp"

namespace orvane_test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;

const std::vector<std::string> kJobs = {"DormantUserExpiry", "SolveOnNoResponse", "CleanUp", "Archive"};

// Every file and folder with its kind, rights and bytes.
std::map<std::string, std::string> Tree(const fs::path& root) {
  std::map<std::string, std::string> tree;
  for (const auto& entry : fs::recursive_directory_iterator(root)) {
    struct stat status {};
    lstat(entry.path().c_str(), &status);
    std::string text = std::to_string(status.st_mode);
    if (S_ISREG(status.st_mode)) text += " " + TemporaryFolder::Read(entry.path());
    tree[entry.path().lexically_relative(root).string()] = std::move(text);
  }
  return tree;
}

void ExpectSameTree(const fs::path& root, const std::map<std::string, std::string>& before) {
  const auto now = Tree(root);
  for (const auto& [path, text] : now) {
    const auto was = before.find(path);
    EXPECT_TRUE(was != before.end()) << path << " is new";
    if (was != before.end()) {
      EXPECT_TRUE(was->second == text) << path << " has changed";
    }
  }
  for (const auto& [path, text] : before) EXPECT_TRUE(now.contains(path)) << path << " is gone";
}

// The lines of a preview or a journal without what may differ: the run, its moments, and the names of pages.
std::vector<std::string> Effects(const std::string& text) {
  static const std::regex kPage("/[0-9]+\\.htm\\b");
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    auto object = nlohmann::ordered_json::parse(line);
    if (object["op"] == "run.start" || object["op"] == "run.end") continue;
    for (const char* member : {"run", "seq", "time"}) object.erase(member);
    lines.push_back(std::regex_replace(object.dump(), kPage, "/PAGE.htm"));
  }
  return lines;
}

class PreviewTest : public testing::Test {
 protected:
  PreviewTest() {
    const Outcome made = RunHost({"init", home_.string(), "--demo"});
    if (made.exitCode != 0) throw std::runtime_error(made.err);
    // A few hundred customers tell as much as ten thousand.
    Sql("DELETE FROM PROSPECT WHERE PROSPECTID % 50 <> 0");
  }

  void Sql(const std::string& script) const {
    sqlite3* database = nullptr;
    sqlite3_open((home_ / "db/orvane.sqlite").c_str(), &database);
    char* message = nullptr;
    const int code = sqlite3_exec(database, script.c_str(), nullptr, nullptr, &message);
    const std::string said = message == nullptr ? "" : message;
    sqlite3_free(message);
    sqlite3_close(database);
    if (code != SQLITE_OK) throw std::runtime_error(script + ": " + said);
  }

  Outcome Preview(std::vector<std::string> jobs, const std::vector<std::string>& options = {"--json"}) const {
    jobs.insert(jobs.begin(), {"preview", "--home", home_.string()});
    jobs.insert(jobs.end(), options.begin(), options.end());
    return RunHost(jobs, {{"TMPDIR", own_.Path().string()}});
  }

  Outcome Run(std::vector<std::string> jobs, const std::vector<std::string>& options = {}) const {
    jobs.insert(jobs.begin(), {"run", "--home", home_.string()});
    jobs.insert(jobs.end(), options.begin(), options.end());
    return RunHost(jobs, {{"TMPDIR", own_.Path().string()}});
  }

  std::string Journals() const {
    std::string text;
    for (const std::string& job : kJobs) {
      for (const auto& entry : fs::directory_iterator(home_ / "journal")) {
        if (entry.path().string().ends_with("-" + job + ".jsonl"))
          text += TemporaryFolder::Read(entry.path());
      }
    }
    return text;
  }

  void ExpectThatTheRunDoesWhatThePreviewSays() {
    const auto before = Tree(folder_.Path());
    const Outcome previewed = Preview(kJobs);
    ExpectSameTree(folder_.Path(), before);
    EXPECT_TRUE(fs::is_empty(own_.Path()));
    const Outcome ran = Run(kJobs);
    EXPECT_EQ(previewed.exitCode, ran.exitCode) << previewed.err << ran.err;
    EXPECT_THAT(Effects(previewed.out), ElementsAreArray(Effects(Journals())));
  }

  TemporaryFolder own_;
  TemporaryFolder folder_;
  const fs::path home_ = folder_.Path() / "home";
};

TEST_F(PreviewTest, SaysOfTheDemoWhatTheRunDoes) {
  ExpectThatTheRunDoesWhatThePreviewSays();
}

class SeededPreviewTest : public PreviewTest, public testing::WithParamInterface<unsigned> {
 protected:
  // Things that go wrong in the suites of real sites.
  void Disturb(std::mt19937& random) {
    const auto one = [&random](unsigned of) { return random() % of == 0; };
    const auto number = [&random](unsigned below) { return std::to_string(random() % below); };
    Sql("UPDATE PARAMETERS SET PARAM_VALUE = '" + std::string(one(8) ? "x" : number(400)) +
        "' WHERE PARAM_NAME = 'MAXDORMANCYTIME'");
    if (one(4))
      Sql("UPDATE PARAMETERS SET PARAM_VALUE = '" + number(900) + "' WHERE PARAM_NAME = 'ArchiveAfter'");
    if (one(3)) Sql("DELETE FROM QUESTIONS WHERE Q_ID % 7 = " + number(7));
    if (one(3)) Sql("UPDATE QUESTIONS SET EMAILID = NULL WHERE Q_ID % 5 = " + number(5));
    if (one(3)) Sql("UPDATE QUESTIONHISTORY SET Q_ORIGINATOR = 'nobody' WHERE Q_ID % 6 = " + number(6));
    if (one(3)) Sql("UPDATE QUESTIONHISTORY SET PRODUCTID = 99999 WHERE Q_ID % 3 = " + number(3));
    if (one(3)) Sql("DELETE FROM REMINDER WHERE Q_ID % 2 = " + number(2));
    if (one(4)) Sql("UPDATE PROSPECT SET PENDINGQUESTIONS = NULL WHERE PROSPECTID % 3 = " + number(3));
    if (one(6))
      Sql("CREATE TRIGGER NO_DELETION BEFORE DELETE ON PROSPECT WHEN old.PROSPECTID % 9 = " + number(9) +
          " BEGIN SELECT RAISE(ABORT, 'this customer stays'); END");
    std::vector<fs::path> files;
    std::vector<fs::path> folders;
    for (const auto& entry : fs::recursive_directory_iterator(home_ / "Data")) {
      (entry.is_directory() ? folders : files).push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    std::sort(folders.begin(), folders.end());
    for (const fs::path& file : files) {
      if (one(12)) fs::permissions(file, fs::perms::owner_write, fs::perm_options::remove);
      if (one(20)) fs::remove(file);
    }
    for (const fs::path& folder : folders) {
      if (one(25) && fs::exists(folder)) fs::remove_all(folder);
    }
    if (one(2)) std::ofstream(home_ / "Data/HTML/Left Over.htm") << "<html/>";
    if (one(4)) fs::create_symlink("nowhere", home_ / "Data/HTML/link.htm");
  }
};

TEST_P(SeededPreviewTest, SaysWhatTheRunDoes) {
  std::mt19937 random(GetParam());
  Disturb(random);
  ExpectThatTheRunDoesWhatThePreviewSays();
}

TEST_P(SeededPreviewTest, SaysWhatASecondRunDoes) {
  std::mt19937 random(GetParam() + 1000);
  Run(kJobs);
  fs::remove_all(home_ / "journal");
  Disturb(random);
  // An archive file that somebody has damaged.
  for (const auto& entry : fs::recursive_directory_iterator(home_ / "Data")) {
    if (entry.path().string().ends_with("_SR.xml") && random() % 3 == 0)
      std::ofstream(entry.path()) << "<Questions";
  }
  Sql("UPDATE QUESTIONHISTORY SET ENDSTATUSTIME = '2001-01-01 00:00:00' WHERE Q_ID % 2 = 0");
  ExpectThatTheRunDoesWhatThePreviewSays();
}

INSTANTIATE_TEST_SUITE_P(Seeds, SeededPreviewTest, testing::Range(0U, 12U));

TEST_F(PreviewTest, TellsPeopleWhatWouldGoOfHowManyAndWhatTheLastRunsDid) {
  Run({"CleanUp"});
  Sql("INSERT INTO PREVIEW(PREVIEWTEXT) VALUES('a'),('b'),('c')");
  const Outcome told = Preview({"cleanup"}, {});
  EXPECT_EQ(told.exitCode, 0) << told.err;
  EXPECT_THAT(told.out, HasSubstr("OrvaneProcess.CleanUp at 20"));
  EXPECT_THAT(told.out, HasSubstr("would delete 3 of 3 rows of PREVIEW (100.0 %); the last run: "));
}

TEST_F(PreviewTest, LooksAtAnyMoment) {
  Sql("UPDATE PROSPECT SET LASTVISITEDTIME = '2030-01-01 00:00:00', PENDINGQUESTIONS = 0;"
      "UPDATE PARAMETERS SET PARAM_VALUE = '30' WHERE PARAM_NAME = 'MAXDORMANCYTIME'");
  const auto deletions = [this](const std::string& at) {
    const Outcome outcome = Preview({"DormantUserExpiry"}, {"--json", "--at", at});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    return Effects(outcome.out).size();
  };
  EXPECT_EQ(deletions("2030-01-31 00:00:00"), 0U);
  EXPECT_GT(deletions("2030-01-31 00:00:01"), 100U);
}

TEST_F(PreviewTest, RefusesWhatIsNoMomentAndNoLimit) {
  for (const char* none :
       {"tomorrow", "2026-02-30 00:00:00", "2026-11-22", "2026-11-22 24:00:00", "2026-11-22T02:00:00"}) {
    const Outcome outcome = Preview({"CleanUp"}, {"--at", none});
    EXPECT_EQ(outcome.exitCode, 64) << none;
    EXPECT_THAT(outcome.err, HasSubstr(none));
  }
  const Outcome outcome = Run({"CleanUp"}, {"--limit", "many"});
  EXPECT_EQ(outcome.exitCode, 64);
  EXPECT_THAT(outcome.err, HasSubstr("many"));
}

TEST_F(PreviewTest, AKilledPreviewLeavesNothing) {
  Sql("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 20000)"
      " INSERT INTO PREVIEW(PREVIEWTEXT) SELECT 'draft' FROM n");
  const auto before = Tree(folder_.Path());
  {
    RunningHost preview({"preview", "--home", home_.string(), "--json", "CleanUp"},
                        {{"TMPDIR", own_.Path().string()}});
    // Its lines fill the pipe, so it cannot come to its end; killed when its copy is made. (While it is being
    // made, a kill leaves an empty log beside the database, as that of any reader does.)
    const fs::path open = "/proc/" + std::to_string(preview.Pid()) + "/fd";
    for (bool copied = false; !copied;) {
      std::error_code failed;
      for (const auto& entry : fs::directory_iterator(open, failed)) {
        const std::string target = fs::read_symlink(entry.path(), failed).string();
        copied = copied || target.ends_with("copy.sqlite (deleted)");
      }
      std::this_thread::yield();
    }
    preview.Signal(SIGKILL);
    preview.Wait();
  }
  ExpectSameTree(folder_.Path(), before);
}

TEST_F(PreviewTest, WaitsForNobodyAndSaysWhoHoldsTheSuite) {
  Run({"CleanUp"});
  const int file = open((home_ / ".lock").c_str(), O_RDWR);
  ASSERT_EQ(flock(file, LOCK_EX), 0);
  const auto before = Tree(folder_.Path());
  const Outcome outcome = Preview({"CleanUp"});
  close(file);
  EXPECT_EQ(outcome.exitCode, 75);
  EXPECT_THAT(outcome.err, HasSubstr("the suite is held by process"));
  EXPECT_THAT(outcome.out, IsEmpty());
  ExpectSameTree(folder_.Path(), before);
}

TEST_F(PreviewTest, ALimitIsCheckedBeforeAnythingIsTouched) {
  Sql("UPDATE PROSPECT SET LASTVISITEDTIME = '2001-01-01 00:00:00', PENDINGQUESTIONS = 0");
  const auto before = Tree(folder_.Path() / "home/db");
  const Outcome refused = Run({"DormantUserExpiry"}, {"--limit", "10"});
  EXPECT_EQ(refused.exitCode, 77);
  EXPECT_THAT(refused.err, HasSubstr("rows of PROSPECT, 10 allowed"));
  ExpectSameTree(folder_.Path() / "home/db", before);
  EXPECT_EQ(Run({"DormantUserExpiry"}, {"--limit", "50%"}).exitCode, 77);
  EXPECT_EQ(Run({"DormantUserExpiry"}, {"--limit", "100%"}).exitCode, 0);
}

TEST_F(PreviewTest, TheNextJobsStillRunWhenOneIsOverItsLimit) {
  Sql("UPDATE PROSPECT SET LASTVISITEDTIME = '2001-01-01 00:00:00', PENDINGQUESTIONS = 0");
  Sql("INSERT INTO PREVIEW(PREVIEWTEXT) VALUES('a'),('b'),('c')");
  const Outcome outcome = Run({"DormantUserExpiry", "CleanUp"}, {"--limit", "100"});
  EXPECT_EQ(outcome.exitCode, 77);
  EXPECT_THAT(outcome.out, HasSubstr("OrvaneProcess.CleanUp: finished"));
}

}  // namespace
}  // namespace orvane_test
