// What a run writes down of its effects, and how it stops at a safe point.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <set>

#include "effects/journal_files.hpp"
#include "effects/journal_reader.hpp"
#include "tests/e2e/demo_suite.hpp"
#include "tests/e2e/hand_made_suite.hpp"
#include "tests/e2e/host_process.hpp"
#include "tests/e2e/small_disk.hpp"

namespace orvane_test {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using Strings = std::vector<std::string>;

constexpr const char* kJobs[] = {"Archive", "CleanUp", "DormantUserExpiry", "SolveOnNoResponse"};

class RunJournalTest : public testing::Test {
 protected:
  void SetUp() override {
    MakeDemoSuite(home_);
    // However slow the test is, a run that it holds up waits for it.
    const std::string name = "config/siteConfiguration.xml", database = "orvane.sqlite";
    std::string site = TemporaryFolder::Read(home_ / name);
    site.insert(site.find(database) + database.size(), ";Timeout=300");
    folder_.Write("home/" + name, site);
  }

  Outcome Run(const Strings& words) const {
    Strings all{"run", "--home", home_.string()};
    all.insert(all.end(), words.begin(), words.end());
    return RunHost(all);
  }
  std::unique_ptr<RunningHost> Start(const Strings& words) const {
    Strings all{"run", "--home", home_.string()};
    all.insert(all.end(), words.begin(), words.end());
    return std::make_unique<RunningHost>(all);
  }

  std::vector<effects::JournalFile> Journals() const { return effects::JournalsIn(home_ / "journal"); }
  // Of the last run.
  std::vector<Json> Lines() const {
    std::vector<Json> lines;
    effects::ReadJournal(Journals().back().path, [&](const Json& line) { lines.push_back(line); });
    return lines;
  }
  static std::map<std::string, int> Ops(const std::vector<Json>& lines) {
    std::map<std::string, int> ops;
    for (const Json& line : lines) ++ops[line["op"]];
    return ops;
  }
  // Waits until the journal of the run that is going on has such a line.
  void AwaitLine(const std::string& op) const {
    const auto start = std::chrono::steady_clock::now();
    for (;;) {
      const auto journals = Journals();
      if (!journals.empty() &&
          TemporaryFolder::Read(journals.back().path).find("\"op\":\"" + op + "\"") != std::string::npos) {
        return;
      }
      ASSERT_LT(std::chrono::steady_clock::now() - start, std::chrono::minutes(5)) << "no line of " << op;
    }
  }
  Database Open() const { return Database(home_ / "db/orvane.sqlite"); }
  static int Number(Database& database, const std::string& query) {
    return std::stoi(database.Rows(query).at(0));
  }

  TemporaryFolder folder_;
  const fs::path home_ = folder_.Path() / "home";
};

TEST_F(RunJournalTest, EveryRunLeavesAJournalOfWhatItChanged) {
  Database database(home_ / "db/orvane.sqlite");
  const int prospects = Number(database, "SELECT count(*) FROM PROSPECT");
  const int requests = Number(database, "SELECT count(*) FROM QUESTIONHISTORY");
  const int transactions = Number(database, "SELECT count(*) FROM TRANSACTIONS");
  const int waiting = Number(database, "SELECT count(*) FROM REMINDER");
  for (const char* job : kJobs) {
    const Outcome outcome = Run({job});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    const std::vector<Json> lines = Lines();
    struct stat status {};
    ASSERT_EQ(stat(Journals().back().path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U) << job;
    EXPECT_EQ(Journals().back().job, job);
    EXPECT_EQ(lines.front()["op"], "run.start");
    EXPECT_EQ(lines.front()["job"], job);
    EXPECT_EQ(lines.front()["preview"], false);
    EXPECT_EQ(lines.back()["op"], "run.end");
    EXPECT_EQ(lines.back()["exit"], 0);

    std::map<std::string, int> deleted;
    int updated = 0;
    bool hasRows = false;
    for (const Json& line : lines) {
      if (line["op"] == "row.delete") ++deleted[line["table"]];
      if (line["op"] == "rows.delete") deleted[line["table"]] += line["count"].get<int>();
      if (line["op"] == "row.update" && line["table"] == "REMINDER") ++updated;
      hasRows = hasRows || line.contains("before");
      if (line.contains("path")) {
        EXPECT_THAT(line["path"].get<std::string>(), Not(HasSubstr("\\"))) << line;
        EXPECT_THAT(line["path"].get<std::string>(), Not(HasSubstr("OrvLog"))) << line;
      }
    }
    EXPECT_EQ(hasRows, std::string_view(job) == "Archive");
    const int gone = std::string_view(job) == "Archive"             ? deleted["QUESTIONHISTORY"]
                     : std::string_view(job) == "DormantUserExpiry" ? deleted["PROSPECT"]
                     : std::string_view(job) == "SolveOnNoResponse" ? deleted["REMINDER"] + updated
                                                                    : deleted["PREVIEW"];
    EXPECT_GT(gone, 0) << job;
    if (std::string_view(job) == "DormantUserExpiry") {
      EXPECT_EQ(Number(database, "SELECT count(*) FROM PROSPECT"), prospects - gone);
    } else if (std::string_view(job) == "Archive") {
      EXPECT_EQ(Number(database, "SELECT count(*) FROM QUESTIONHISTORY"), requests - gone);
      EXPECT_EQ(Number(database, "SELECT count(*) FROM TRANSACTIONS"),
                transactions - deleted["TRANSACTIONS"]);
      EXPECT_EQ(Ops(lines)["begin"], Ops(lines)["commit"]);
      EXPECT_GT(Ops(lines)["document.save"], 0);
    } else if (std::string_view(job) == "SolveOnNoResponse") {
      EXPECT_EQ(Number(database, "SELECT count(*) FROM REMINDER"), waiting - deleted["REMINDER"]);
      EXPECT_EQ(Ops(lines)["mail.send"], gone);
      EXPECT_EQ(Ops(lines)["event"] > 0, true);
    }
  }
  EXPECT_THAT(Journals(), SizeIs(4));
}

TEST_F(RunJournalTest, ItKeepsWhatItIsToldTo) {
  ASSERT_EQ(Run({"--journal=off", "DormantUserExpiry"}).exitCode, 0);
  EXPECT_FALSE(fs::exists(home_ / "journal"));
  ASSERT_EQ(Run({"--journal", "keys", "Archive"}).exitCode, 0);
  for (const Json& line : Lines()) EXPECT_FALSE(line.contains("before")) << line;
  Database database(home_ / "db/orvane.sqlite");
  ASSERT_EQ(Run({"--journal", "rows", "SolveOnNoResponse"}).exitCode, 0);
  const std::vector<Json> lines = Lines();
  for (const Json& line : lines) {
    if (line["op"] == "row.delete") {
      EXPECT_EQ(line["before"]["Q_ID"], line["key"]["Q_ID"]) << line;
      EXPECT_TRUE(line["before"].contains("T1_DATE")) << line;
    }
    if (line["op"] == "row.insert") {
      EXPECT_TRUE(line["before"].is_null()) << line;
    }
  }
}

TEST_F(RunJournalTest, OneThatCannotBeBegunKeepsTheRunFromBeginning) {
  folder_.Write("home/journal", "a file");
  const Outcome outcome = Run({"DormantUserExpiry"});
  EXPECT_EQ(outcome.exitCode, 78);
  EXPECT_THAT(outcome.err, HasSubstr("the journal cannot be begun, nothing was done: "));
  EXPECT_FALSE(fs::exists(folder_.Path() / "OrvLog"));
}

TEST_F(RunJournalTest, OldOnesGoWhenARunBegins) {
  folder_.Write("home/journal/20200101T000000Z-1-Archive.jsonl", "old");
  ASSERT_EQ(Run({"DormantUserExpiry"}).exitCode, 0);
  EXPECT_THAT(Journals(), SizeIs(1));
  const fs::path site = home_ / "config/siteConfiguration.xml";
  std::string text = TemporaryFolder::Read(site);
  const std::string end = "</siteConfiguration>";
  text.replace(text.find(end), end.size(),
               "<section name=\"HOST\"><key name=\"JournalDays\">x</key></section>" + end);
  folder_.Write("home/config/siteConfiguration.xml", text);
  const Outcome outcome = Run({"DormantUserExpiry"});
  EXPECT_EQ(outcome.exitCode, 78);
  EXPECT_THAT(outcome.err,
              HasSubstr("key \"JournalDays\": found \"x\"; expected a number of days, 1 to 36500"));
}

TEST_F(RunJournalTest, AFullDiskUnderItStopsTheRunAtASafePointWithNoEffectUntold) {
  const SmallDisk disk(home_ / "journal", "size=1100k");
  if (!disk.Mounted()) GTEST_SKIP() << "no file system can be mounted here: " << disk.Problem();
  Database database(home_ / "db/orvane.sqlite");
  const int before = Number(database, "SELECT count(*) FROM PROSPECT");
  const Outcome outcome = Run({"DormantUserExpiry"});
  EXPECT_EQ(outcome.exitCode, 70) << outcome.err;
  EXPECT_THAT(outcome.err, HasSubstr("The disk under the journal is full"));
  EXPECT_THAT(outcome.err, HasSubstr("stopped at a safe point"));
  const std::vector<Json> lines = Lines();
  EXPECT_EQ(lines.back()["op"], "run.end");
  EXPECT_EQ(lines.back()["exit"], 70);
  EXPECT_THAT(lines[lines.size() - 2]["text"].get<std::string>(), HasSubstr("full"));
  EXPECT_EQ(Number(database, "SELECT count(*) FROM PROSPECT"), before - Ops(lines)["row.delete"]);
  EXPECT_GT(Ops(lines)["row.delete"], 0);
}

TEST_F(RunJournalTest, ADiskThatIsFullBeforehandKeepsTheRunFromBeginning) {
  const SmallDisk disk(home_ / "journal", "size=64k");
  if (!disk.Mounted()) GTEST_SKIP() << "no file system can be mounted here: " << disk.Problem();
  EXPECT_EQ(Run({"DormantUserExpiry"}).exitCode, 78);
  EXPECT_THAT(Journals(), IsEmpty());
}

// Each job is held up by a lock of the database, told to stop meanwhile, and let go on.
class StoppedRunTest : public RunJournalTest {
 protected:
  // Stops the job behind the first line of this kind.
  void StopBehind(const std::string& job, const std::string& op) {
    auto held = std::make_unique<Database>(home_ / "db/orvane.sqlite");
    held->Execute("BEGIN IMMEDIATE");
    const auto run = Start({job});
    AwaitLine(op);
    run->Signal(SIGTERM);
    run->AwaitError("orvane-host: asked to stop; goes on to the next safe point\n");
    held->Execute("ROLLBACK");
    const Outcome stopped = run->Wait();
    EXPECT_EQ(stopped.exitCode, 75) << stopped.out << stopped.err;
    EXPECT_EQ(stopped.out, "OrvaneProcess." + job + ": stopped\n");
    EXPECT_THAT(stopped.err, HasSubstr("asked to stop; stopped at a safe point\n"));
    EXPECT_EQ(Lines().back()["exit"], 75);
    const Outcome status = RunHost({"status", "--home", home_.string()});
    EXPECT_THAT(status.out, HasSubstr("stopped on request"));
    EXPECT_THAT(status.out, Not(HasSubstr("unfinished")));
  }
};

TEST_F(StoppedRunTest, TheExpiryStopsBehindAProspect) {
  StopBehind("DormantUserExpiry", "row.delete");
  EXPECT_EQ(Ops(Lines())["row.delete"], 1);
  EXPECT_EQ(Run({"DormantUserExpiry"}).exitCode, 0);
}

TEST_F(StoppedRunTest, TheArchiveStopsBehindACustomer) {
  Database database(home_ / "db/orvane.sqlite");
  const Strings due = database.Rows("SELECT Q_ID FROM QUESTIONHISTORY ORDER BY Q_ID");
  StopBehind("Archive", "begin");
  EXPECT_EQ(Ops(Lines())["commit"], 1);
  std::multiset<int> archived;
  const auto collect = [&] {
    for (const Json& line : Lines()) {
      if (line["op"] != "rows.delete" || line["table"] != "QUESTIONHISTORY") continue;
      for (const Json& key : line["keys"]) archived.insert(key["Q_ID"].get<int>());
    }
  };
  collect();
  EXPECT_GT(archived.size(), 0U);
  EXPECT_EQ(Run({"Archive"}).exitCode, 0);
  collect();
  EXPECT_EQ(std::set<int>(archived.begin(), archived.end()).size(), archived.size()) << "nothing goes twice";
  EXPECT_EQ(due.size() - archived.size(), database.Rows("SELECT Q_ID FROM QUESTIONHISTORY").size());
}

TEST_F(StoppedRunTest, TheSolvingStopsBehindAReminder) {
  StopBehind("SolveOnNoResponse", "row.update");
  const int mails = Ops(Lines())["mail.send"];
  EXPECT_EQ(mails, 1);
  EXPECT_EQ(Run({"SolveOnNoResponse"}).exitCode, 0);
  const auto pickup = fs::directory_iterator(home_ / "mail/pickup");
  // One question has no recipient.
  EXPECT_EQ(std::distance(pickup, fs::directory_iterator()),
            mails + Ops(Lines())["mail.send"] - Ops(Lines())["failed"]);
}

TEST_F(StoppedRunTest, TheCleanUpStopsBehindAFileOrASweep) {
  folder_.Write("home/Data/HTML/left-over.htm", "x");
  StopBehind("CleanUp", "file.delete");
  EXPECT_EQ(Run({"CleanUp"}).exitCode, 0);
}

TEST_F(StoppedRunTest, ASecondSignalEndsItOnTheSpot) {
  Database held(home_ / "db/orvane.sqlite");
  held.Execute("BEGIN IMMEDIATE");
  const auto run = Start({"DormantUserExpiry"});
  AwaitLine("row.delete");
  run->Signal(SIGINT);
  run->AwaitError("goes on to the next safe point\n");
  run->Signal(SIGINT);
  const Outcome ended = run->Wait();
  EXPECT_EQ(ended.exitCode, 70);
  EXPECT_THAT(ended.err, HasSubstr("asked to stop a second time; stopped on the spot\n"));
  EXPECT_NE(Lines().back()["op"], "run.end");
}

TEST_F(StoppedRunTest, TheJobsBehindAStoppedOneDoNotRun) {
  auto held = std::make_unique<Database>(home_ / "db/orvane.sqlite");
  held->Execute("BEGIN IMMEDIATE");
  const auto run = Start({"DormantUserExpiry", "Archive"});
  AwaitLine("row.delete");
  run->Signal(SIGTERM);
  run->AwaitError("goes on to the next safe point\n");
  held->Execute("ROLLBACK");
  EXPECT_EQ(run->Wait().exitCode, 75);
  EXPECT_THAT(Journals(), SizeIs(1));
}

// A service that goes away while the job is held up behind its first line of this kind.
class LostServiceTest : public RunJournalTest {
 protected:
  Outcome RunWithout(const fs::path& service, const Strings& words, const std::string& op) {
    auto held = std::make_unique<Database>(home_ / "db/orvane.sqlite");
    held->Execute("BEGIN IMMEDIATE");
    const auto run = Start(words);
    AwaitLine(op);
    fs::remove_all(home_ / service);
    held->Execute("ROLLBACK");
    return run->Wait();
  }
};

TEST_F(LostServiceTest, TheArchiveStopsWhenTheDirectoryHasGone) {
  const Outcome outcome = RunWithout("config/directory.ldif", {"Archive"}, "begin");
  EXPECT_EQ(outcome.exitCode, 69) << outcome.err;
  EXPECT_THAT(outcome.err, HasSubstr("the directory has failed 3 times in a row"));
  const std::vector<Json> lines = Lines();
  EXPECT_EQ(lines.back()["exit"], 69);
  EXPECT_THAT(lines[lines.size() - 2]["text"].get<std::string>(), HasSubstr("the directory has failed"));
  EXPECT_NE(Open().Rows("SELECT count(*) FROM QUESTIONHISTORY"), Strings{"0"});
}

TEST_F(LostServiceTest, TheArchiveGoesOnWhereItIsToldTo) {
  const Outcome outcome = RunWithout("config/directory.ldif", {"--no-preflight", "Archive"}, "begin");
  EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
}

TEST_F(LostServiceTest, TheSolvingStopsWhenMailHasGone) {
  const Outcome outcome = RunWithout("mail/pickup", {"SolveOnNoResponse"}, "row.update");
  EXPECT_EQ(outcome.exitCode, 69) << outcome.err;
  EXPECT_THAT(outcome.err, HasSubstr("the mail transport has failed 3 times in a row"));
  EXPECT_EQ(Ops(Lines())["mail.send"], 3);
  EXPECT_EQ(Ops(Lines())["failed"], 3);
}

}  // namespace
}  // namespace orvane_test
