// Archived requests put back from the journal of the run: the tables are what they were, whatever became of
// the run.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "run/lock/file_lock.hpp"
#include "tests/e2e/demo_suite.hpp"
#include "tests/e2e/host_process.hpp"
#include "tests/support/temporary_folder.hpp"

namespace orvane_test {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using Strings = std::vector<std::string>;

class RestoreTest : public testing::Test {
 protected:
  RestoreTest() {
    MakeDemoSuite(home_);
    // What a column can hold beside plain text.
    Sql("UPDATE QUESTIONHISTORY SET Q_TEXT = 'it''s \"quoted\" \\ ' || char(9,10,233,128512), A_TEXT = NULL, "
        "EMAILID = '' WHERE Q_ID = 5231;"
        "UPDATE QUESTIONHISTORY SET ENDSTATUSTIME = '2020-02-29 23:59:59.25' WHERE Q_ID = 5219");
  }

  std::vector<std::string> Query(const std::string& sql) const {
    sqlite3* database = nullptr;
    sqlite3_open((home_ / "db/orvane.sqlite").c_str(), &database);
    std::vector<std::string> lines;
    char* message = nullptr;
    const auto keep = [](void* to, int count, char** values, char**) {
      std::string line;
      for (int i = 0; i < count; ++i) line += (values[i] == nullptr ? "NULL" : values[i]) + std::string("|");
      static_cast<std::vector<std::string>*>(to)->push_back(line);
      return 0;
    };
    const int code = sqlite3_exec(database, sql.c_str(), keep, &lines, &message);
    const std::string said = message == nullptr ? "" : message;
    sqlite3_free(message);
    sqlite3_close(database);
    if (code != SQLITE_OK) throw std::runtime_error(sql + ": " + said);
    return lines;
  }
  void Sql(const std::string& script) const { Query(script); }

  // Every value as it is stored, its type and its bytes.
  std::vector<std::string> Dump() const {
    std::vector<std::string> dump;
    for (const char* table : {"QUESTIONHISTORY", "TRANSACTIONS"}) {
      std::string values;
      for (const std::string& line :
           Query(std::string("SELECT name FROM pragma_table_info('") + table + "')")) {
        const std::string column = line.substr(0, line.size() - 1);
        values += (values.empty() ? "" : ",") + ("typeof(" + column + "),quote(" + column + ")");
      }
      for (std::string& line : Query("SELECT " + values + " FROM " + table + " ORDER BY 2, 4"))
        dump.push_back(std::move(line));
    }
    return dump;
  }

  std::string Archive(const Strings& options = {}) const {
    Strings words{"run", "--home", home_.string(), "Archive"};
    words.insert(words.end(), options.begin(), options.end());
    EXPECT_EQ(RunHost(words).exitCode, 0);
    return LastRun();
  }
  std::string LastRun() const {
    fs::path last;
    for (const auto& entry : fs::directory_iterator(home_ / "journal")) {
      if (entry.path().extension() != ".jsonl") continue;
      if (last.empty() || fs::last_write_time(last) < entry.last_write_time()) last = entry.path();
    }
    return last.stem().string();
  }
  Outcome Restore(const std::string& run, const Strings& more = {}) const {
    Strings words{"restore", "--home", home_.string(), run};
    words.insert(words.end(), more.begin(), more.end());
    return RunHost(words);
  }
  // The run is killed before one of its calls of a kind, on files below a folder of the suite.
  struct Calls {
    const char* kind;
    const char* below;
  };
  Outcome ArchiveDisturbed(const Calls& calls, const std::string& setting, const std::string& value) const {
    return RunHost({"run", "--home", home_.string(), "Archive"},
                   {{"LD_PRELOAD", ORVANE_FAULT_POINTS},
                    {"FAULT_CALL", calls.kind},
                    {"FAULT_BELOW", (home_ / calls.below).string()},
                    {setting, value}});
  }
  long Count(const Calls& calls) const {
    const fs::path count = folder_.Path() / "count";
    EXPECT_EQ(ArchiveDisturbed(calls, "FAULT_COUNT", count.string()).exitCode, 0);
    return std::stol(TemporaryFolder::Read(count));
  }
  std::string Archives() const {
    std::string text;
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(home_ / "Data/Archives")) files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    for (const fs::path& file : files) text += file.string() + TemporaryFolder::Read(file);
    return text;
  }

  TemporaryFolder folder_;
  const fs::path home_ = folder_.Path() / "home";
};

TEST_F(RestoreTest, PutsEveryRowBackAsItWasAndLeavesTheFilesAlone) {
  const auto before = Dump();
  const std::string run = Archive();
  const auto archived = Dump();
  ASSERT_LT(archived.size() + 100, before.size());
  const std::string files = Archives();

  const Outcome shown = Restore(run);
  EXPECT_EQ(shown.exitCode, 0) << shown.err;
  EXPECT_THAT(shown.out,
              AllOf(HasSubstr("request 5231, hmueller, "), HasSubstr("would be put back; --apply")));
  EXPECT_THAT(shown.err, HasSubstr("the next run of Archive archives them again"));
  EXPECT_EQ(Dump(), archived);

  const Outcome applied = Restore(run, {"--apply"});
  EXPECT_EQ(applied.exitCode, 0) << applied.err;
  EXPECT_THAT(applied.out, HasSubstr(" put back\n"));
  EXPECT_EQ(Dump(), before);
  EXPECT_EQ(Archives(), files);

  // Twice is once too often; the next run archives them again.
  const Outcome again = Restore(run, {"--apply"});
  EXPECT_EQ(again.exitCode, 70);
  EXPECT_THAT(again.err,
              AllOf(HasSubstr(": is there already\norvane-host: and "), HasSubstr("nothing was put back")));
  EXPECT_EQ(Dump(), before);
  Archive();
  EXPECT_EQ(Dump(), archived);
}

TEST_F(RestoreTest, PutsSingleRequestsBack) {
  const std::string run = Archive();
  const Outcome outcome = Restore(run, {"5231", "--apply", "5219"});
  EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
  EXPECT_THAT(outcome.out, HasSubstr("2 requests with 4 transactions put back\n"));
  EXPECT_EQ(Query("SELECT count(*) FROM QUESTIONHISTORY WHERE Q_ID IN (5231, 5219)"), Strings{"2|"});
  EXPECT_EQ(Query("SELECT count(*) FROM TRANSACTIONS WHERE Q_ID IN (5231, 5219)"), Strings{"4|"});
}

TEST_F(RestoreTest, RefusesAllOfItWhenOneKeyExists) {
  const std::string run = Archive();
  Sql("INSERT INTO TRANSACTIONS(T_ID, Q_ID) VALUES(345, 1)");
  const auto before = Dump();
  for (const Strings& options : {Strings{}, Strings{"--apply"}}) {
    const Outcome outcome = Restore(run, options);
    EXPECT_EQ(outcome.exitCode, 70);
    EXPECT_THAT(outcome.err, HasSubstr("TRANSACTIONS, T_ID 345: is there already\n"));
    EXPECT_EQ(Dump(), before);
  }
}

TEST_F(RestoreTest, AFailureInTheMiddleLeavesNothing) {
  const std::string run = Archive();
  Sql("CREATE TRIGGER NOT_THIS BEFORE INSERT ON TRANSACTIONS WHEN new.T_ID = 345 "
      "BEGIN SELECT RAISE(ABORT, 'not this one'); END");
  const auto before = Dump();
  const Outcome outcome = Restore(run, {"--apply"});
  EXPECT_EQ(outcome.exitCode, 70);
  EXPECT_THAT(outcome.err,
              AllOf(HasSubstr("TRANSACTIONS, T_ID 345: not this one"), HasSubstr("nothing was put back")));
  EXPECT_EQ(Dump(), before);
  Sql("DROP TRIGGER NOT_THIS; ALTER TABLE QUESTIONHISTORY DROP COLUMN Q_CALL");
  EXPECT_THAT(Restore(run, {"--apply"}).err, HasSubstr("the table QUESTIONHISTORY has no column Q_CALL"));
}

// While it replaces a file, and within the commits of its deletions.
TEST_F(RestoreTest, PutsBackWhatAKilledRunHadDeleted) {
  const auto before = Dump();
  for (const Calls& calls : {Calls{"rename", "Data/Archives"}, Calls{"write", "db/orvane.sqlite-wal"}}) {
    const long all = Count(calls);
    ASSERT_GT(all, 10) << calls.kind;
    ASSERT_EQ(Restore(LastRun(), {"--apply"}).exitCode, 0);
    for (const long point : {all / 4, all / 2, all - 1}) {
      SCOPED_TRACE(calls.kind + (" " + std::to_string(point)) + " of " + std::to_string(all));
      fs::remove_all(home_ / "journal");
      EXPECT_EQ(ArchiveDisturbed(calls, "FAULT_AT", std::to_string(point)).exitCode, -1);
      const std::string run = LastRun();
      EXPECT_THAT(TemporaryFolder::Read(home_ / "journal" / (run + ".jsonl")), Not(HasSubstr("run.end")));
      EXPECT_LT(Dump().size(), before.size());
      const Outcome outcome = Restore(run, {"--apply"});
      EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
      EXPECT_EQ(Dump(), before);
    }
  }
}

TEST_F(RestoreTest, AsksTheDatabaseWhetherTheLastCommitOfAKilledRunTookPlace) {
  const auto before = Dump();
  const std::string run = Archive();
  const auto archived = Dump();
  // As of a run that was killed behind the line of its last commit.
  const fs::path journal = home_ / "journal" / (run + ".jsonl");
  std::string text = TemporaryFolder::Read(journal);
  const std::size_t commit = text.rfind("\"op\":\"commit\"");
  ASSERT_NE(commit, std::string::npos);
  text.resize(text.find('\n', commit) + 1);
  std::ofstream(journal, std::ios::binary) << text;
  EXPECT_EQ(Restore(run, {"--apply"}).exitCode, 0);
  EXPECT_EQ(Dump(), before);

  // The commit did not take place: its customer is in the tables, those before are not.
  std::string others = "0";
  std::istringstream lines(text.substr(0, text.rfind("\"op\":\"begin\"")));
  for (std::string line; std::getline(lines, line);) {
    const auto object = nlohmann::json::parse(line, nullptr, false);
    if (object.is_discarded() || object["op"] != "rows.delete" || object["table"] != "QUESTIONHISTORY")
      continue;
    for (const auto& key : object["keys"]) others += "," + key["Q_ID"].dump();
  }
  Sql("DELETE FROM QUESTIONHISTORY WHERE Q_ID IN (" + others + ");DELETE FROM TRANSACTIONS WHERE Q_ID IN (" +
      others + ")");
  ASSERT_GT(Dump().size(), archived.size());
  const Outcome outcome = Restore(run, {"--apply"});
  EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
  EXPECT_THAT(outcome.err, HasSubstr("of one transaction are in the database"));
  EXPECT_EQ(Dump(), before);
}

TEST_F(RestoreTest, SaysWhyAJournalIsOfNoUse) {
  const std::string keys = Archive({"--journal", "keys"});
  const Outcome keysOnly = Restore(keys);
  EXPECT_EQ(keysOnly.exitCode, 70);
  EXPECT_THAT(keysOnly.err,
              AllOf(HasSubstr("holds the keys of "), HasSubstr("the archive files are all there is")));

  EXPECT_EQ(RunHost({"run", "--home", home_.string(), "CleanUp"}).exitCode, 0);
  const Outcome other = Restore(LastRun());
  EXPECT_EQ(other.exitCode, 70);
  EXPECT_THAT(other.err, HasSubstr("it is a run of CleanUp"));

  for (const char* unknown : {"20200101T000000Z-1-Archive", "../db/orvane", "x"}) {
    EXPECT_EQ(Restore(unknown).exitCode, 64) << unknown;
  }
  EXPECT_EQ(RunHost({"restore", "--home", home_.string()}).exitCode, 64);
  const std::string nothing = Archive();
  EXPECT_EQ(Restore(nothing, {"5231"}).exitCode, 64);
  EXPECT_EQ(Restore(nothing, {"many"}).exitCode, 64);
  EXPECT_THAT(Restore(nothing).out, HasSubstr("0 requests with 0 transactions"));
}

TEST_F(RestoreTest, ApplyWaitsForItsTurn) {
  const std::string run = Archive();
  auto lock = orvane_lock::FileLock::TryTake(home_ / ".lock", orvane_lock::ThisProcess("a test"));
  RunningHost restoring({"restore", "--home", home_.string(), "--apply", run});
  restoring.AwaitError("the suite is held by process");
  EXPECT_EQ(Restore(run).exitCode, 0);  // to look takes no turn
  lock.reset();
  EXPECT_EQ(restoring.Wait().exitCode, 0);
}

// The run that it waits for goes on meanwhile, and so does its journal.
TEST_F(RestoreTest, ApplyPutsBackWhatTheRunDeletedWhileItWasWaitedFor) {
  const auto before = Dump();
  const std::string run = Archive();
  const fs::path journal = home_ / "journal" / (run + ".jsonl");
  const std::string whole = TemporaryFolder::Read(journal);
  auto lock = orvane_lock::FileLock::TryTake(home_ / ".lock", orvane_lock::ThisProcess("a test"));
  std::ofstream(journal, std::ios::binary)
      << whole.substr(0, whole.find('\n', whole.find("\"op\":\"commit\"")) + 1);
  RunningHost restoring({"restore", "--home", home_.string(), "--apply", run});
  restoring.AwaitError("the suite is held by process");
  std::ofstream(journal, std::ios::binary) << whole;
  lock.reset();
  EXPECT_EQ(restoring.Wait().exitCode, 0);
  EXPECT_EQ(Dump(), before);
}

}  // namespace
}  // namespace orvane_test
