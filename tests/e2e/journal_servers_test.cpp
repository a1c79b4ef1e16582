// The journals of runs on servers: what they say took place is what the databases have lost and got.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "effects/journal_files.hpp"
#include "effects/journal_reader.hpp"
#include "tests/e2e/host_process.hpp"
#include "tests/e2e/previewed_suite.hpp"
#include "tests/servers/server_sessions.hpp"

namespace orvane_test {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;
using Keys = std::map<std::string, std::set<int>>;  // by table
using testing::IsEmpty;
using testing::Not;

// Tables that the jobs delete from, each with the column that tells a row from the others.
const std::map<std::string, std::string> kKeys = {{"PROSPECT", "PROSPECTID"},
                                                  {"PREVIEW", "PREVIEWID"},
                                                  {"QUESTIONHISTORY", "Q_ID"},
                                                  {"TRANSACTIONS", "T_ID"},
                                                  {"REMINDER", "Q_ID"}};

// Reads a journal as docs/journal.md says.
struct Told {
  Keys deleted;
  int commits = 0;
  int undone = 0;  // transactions
  bool isOpen = false;
  std::vector<Json> lines;

  explicit Told(const fs::path& journal) {
    EXPECT_TRUE(effects::ReadJournal(journal, [this](const Json& line) { lines.push_back(line); }));
    std::set<std::uint64_t> failed;
    for (const Json& line : lines) {
      if (line["op"] == "failed") failed.insert(line["of"].get<std::uint64_t>());
    }
    Keys open;
    std::string time;
    for (const Json& line : lines) {
      EXPECT_GE(line["time"].get<std::string>(), time);
      time = line["time"];
      const std::string op = line["op"];
      const bool took = failed.count(line["seq"].get<std::uint64_t>()) == 0;
      if (op == "begin") {
        EXPECT_FALSE(isOpen);
        isOpen = took;
        open.clear();
      } else if (op == "commit" || op == "rollback") {
        EXPECT_TRUE(isOpen);
        isOpen = false;
        const bool stays = op == "commit" && took;
        ++(stays ? commits : undone);
        for (const auto& [table, keys] : open) {
          if (stays) deleted[table].insert(keys.begin(), keys.end());
        }
      } else if (took && (op == "row.delete" || op == "rows.delete")) {
        const std::string table = line["table"];
        if (!kKeys.contains(table)) continue;
        Keys& to = isOpen ? open : deleted;
        if (op == "row.delete") {
          to[table].insert(line["key"][kKeys.at(table)].get<int>());
        } else {
          EXPECT_EQ(line["keys"].size(), line["count"].get<std::size_t>());
          for (const Json& key : line["keys"]) to[table].insert(key[kKeys.at(table)].get<int>());
        }
      }
    }
  }
};

class ServerJournalTest : public testing::TestWithParam<std::string> {
 protected:
  Keys Rows() const {
    const auto session = suite_.Server().Orvane().Connect();
    Keys rows;
    for (const auto& [table, key] : kKeys) {
      const auto found = session->Query("SELECT " + key + " FROM " + table, {});
      std::set<int>& keys = rows[table];
      while (found->Next()) keys.insert(automation::ToInt32(found->Value(0)));
    }
    return rows;
  }

  // Without those that came meanwhile.
  static Keys Gone(const Keys& before, const Keys& now) {
    Keys gone;
    for (const auto& [table, keys] : before) {
      for (const int key : keys) {
        if (now.at(table).count(key) == 0) gone[table].insert(key);
      }
    }
    return gone;
  }

  fs::path Journal(const std::string& job) const {
    fs::path last;
    for (const auto& journal : effects::JournalsIn(suite_.Home() / "journal")) {
      if (journal.job == job) last = journal.path;
    }
    return last;
  }

  PreviewedSuite suite_{GetParam()};
};

TEST_P(ServerJournalTest, TellsOfEveryJobWhatWentAndNothingElse) {
  for (const std::string& job : AllJobs()) {
    const Keys before = Rows();
    const Outcome outcome = suite_.Run({job});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    const Told told(Journal(job));
    EXPECT_EQ(told.deleted, Gone(before, Rows())) << job;
    EXPECT_THAT(told.deleted, Not(IsEmpty())) << job;
    EXPECT_EQ(told.lines.back()["op"], "run.end") << job;
    EXPECT_FALSE(told.isOpen) << job;
    if (job == "Archive") {
      EXPECT_GT(told.commits, 3);
      EXPECT_EQ(told.undone, 0);
    }
  }
}

TEST_P(ServerJournalTest, KeepsTheRowsOfTheArchiveAsTheyWere) {
  const auto session = suite_.Server().Orvane().Connect();
  std::map<int, std::pair<int, std::string>> before;
  {
    const auto rows = session->Query("SELECT T_ID, Q_ID, T_NAME FROM TRANSACTIONS", {});
    while (rows->Next()) {
      before[automation::ToInt32(rows->Value(0))] = {automation::ToInt32(rows->Value(1)),
                                                     automation::ToTextOrEmpty(rows->Value(2))};
    }
  }
  ASSERT_EQ(suite_.Run({"Archive"}).exitCode, 0);
  std::size_t compared = 0;
  for (const Json& line : Told(Journal("Archive")).lines) {
    if (line["op"] != "rows.delete" || line["table"] != "TRANSACTIONS") continue;
    ASSERT_EQ(line["before"].size(), line["keys"].size());
    for (std::size_t i = 0; i < line["keys"].size(); ++i, ++compared) {
      const Json& row = line["before"][i];
      EXPECT_EQ(row["T_ID"], line["keys"][i]["T_ID"]);
      const auto& [question, name] = before.at(row["T_ID"].get<int>());
      EXPECT_EQ(row["Q_ID"].get<int>(), question);
      EXPECT_EQ(row["T_NAME"].get<std::string>(), name);
    }
  }
  EXPECT_GT(compared, 100U);
}

TEST_P(ServerJournalTest, MarksWhatWasUndone) {
  suite_.RefuseRows("DELETE", "QUESTIONHISTORY", "OLD.Q_ID % 9 = 4");
  const Keys before = Rows();
  ASSERT_EQ(suite_.Run({"Archive"}).exitCode, 0);
  const Told told(Journal("Archive"));
  EXPECT_EQ(told.deleted, Gone(before, Rows()));
  EXPECT_GT(told.commits, 0);
  EXPECT_GT(told.undone, 0);
  for (const int key : told.deleted.at("QUESTIONHISTORY")) EXPECT_NE(key % 9, 4);
}

// Killed while it waits for a row that another session has locked.
TEST_P(ServerJournalTest, SaysOfAKilledRunWhatBecamePermanent) {
  // The rows of a customer that comes late in a preview; in which order a server gives customers is its own
  // affair.
  int held = 0;
  std::istringstream stream(suite_.Preview({"Archive"}).out);
  for (std::string text; std::getline(stream, text);) {
    const Json line = Json::parse(text);
    if (line["op"] == "rows.delete" && line["table"] == "QUESTIONHISTORY") held = line["keys"][0]["Q_ID"];
  }
  ASSERT_NE(held, 0);
  const Keys before = Rows();
  const auto other = suite_.Server().Orvane().Connect();
  other->Begin();
  other->Execute("UPDATE QUESTIONHISTORY SET Q_SITE = 'mine' WHERE Q_ID = " + std::to_string(held), {});
  const auto observer = suite_.Server().Orvane().Connect();
  {
    RunningHost run(suite_.Words("run", {"Archive"}), suite_.Environment());
    // MariaDB shows anew who waits when nobody has asked for a tenth of a second.
    while (WaitingSessions(*observer, GetParam()) == 0) {
      std::this_thread::sleep_for(std::chrono::milliseconds(150));
    }
    run.Signal(SIGKILL);
    run.Wait();
  }
  other->Rollback();
  // The server ends what the run had open: these two sessions are left.
  while (OtherSessions(*observer, GetParam()) > 1) std::this_thread::yield();
  const Told told(Journal("Archive"));
  EXPECT_NE(told.lines.back()["op"], "run.end");
  EXPECT_TRUE(told.isOpen);
  EXPECT_EQ(told.deleted, Gone(before, Rows()));
}

INSTANTIATE_TEST_SUITE_P(Servers, ServerJournalTest, testing::Values("postgresql", "mariadb"),
                         [](const auto& server) { return server.param; });

}  // namespace
}  // namespace orvane_test
