// The clean-up on a database server that is stopped, killed or restarted in the middle of a run: each sweep
// that needs the database reports it once, the others do their work, and the next run does what is left.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "jobs/cleanup/clean_up.hpp"
#include "tests/doubles/memory/registration.hpp"
#include "tests/servers/dying_server.hpp"
#include "tests/servers/server_environment.hpp"

namespace orvane_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Texts = std::vector<std::string>;

const std::string kStarted =
    "*****************************************************\r\n"
    "Orvane NTService Log \r\n"
    "*****************************************************\r\n"
    "Clean Up - NTService Started at : 7-26-2004 09:05:03\r\n";
const std::string kStopped =
    " NTService Stopped at : 7-26-2004 09:05:03\r\n"
    "*****************************************************\r\n";

std::string Lost(const std::string& source) {
  return source + " caught: <lost> (-2147467259). Additional information: <lost>";
}
const std::string kChat = Lost("Orvprocess.cleanup.DeleteChatSession");
const std::string kPreviews = Lost("ORVPROCESS.CLEANUP.DELETEPREVIEWS");
const std::string kUnsubmitted = Lost("ORVProcess.cleanup.DeleteSRAttchmentsFilesWithzerostatus");
const std::string kOldFiles = Lost("ORVProcess.cleanup.DeleteSRAttchmentsFilesWithotherstatus");

const Texts kAllFiles = {"CHAT/live.txt",           "CHAT/orphan.txt",         "HTML/page.htm",
                         "SRATTACHMENTS/17Q/a.txt", "SRATTACHMENTS/19Q/b.txt", "SRATTACHMENTS/20A/kept.txt"};
const Texts kUnsubmittedLeft = {"CHAT/live.txt", "SRATTACHMENTS/17Q/a.txt", "SRATTACHMENTS/19Q/b.txt",
                                "SRATTACHMENTS/20A/kept.txt"};
const Texts kOldFileLeft = {"CHAT/live.txt", "SRATTACHMENTS/19Q/b.txt", "SRATTACHMENTS/20A/kept.txt"};
const Texts kClean = {"CHAT/live.txt", "SRATTACHMENTS/20A/kept.txt"};

// A statement before which it happens, and what the run leaves then.
struct Point {
  const char* name;
  const char* statement;  // a part of its text
  Texts errors;
  Texts files;
  Texts previews;
  Texts questions;
  Texts dataFiles;
  // What the next run cannot make up for.
  Texts nextErrors = {};
  Texts dataFilesInTheEnd = {"kept.txt"};
};

const std::vector<Point>& Points() {
  static const Texts draft = {"draft"};
  static const Texts all = {"17", "18", "19"};
  static const Texts rows = {"a.txt", "b.txt", "kept.txt"};
  static const std::vector<Point> points = {
      {"Chats",
       "SELECT SESSIONID",
       {kChat, kPreviews, kUnsubmitted, kOldFiles},
       {"CHAT/live.txt", "CHAT/orphan.txt", "SRATTACHMENTS/17Q/a.txt", "SRATTACHMENTS/19Q/b.txt",
        "SRATTACHMENTS/20A/kept.txt"},
       draft,
       all,
       rows},
      {"Previews",
       "DELETE FROM PREVIEW",
       {kPreviews, kUnsubmitted, kOldFiles},
       kUnsubmittedLeft,
       draft,
       all,
       rows},
      {"Unsubmitted", "SELECT * FROM QUESTIONS", {kUnsubmitted, kOldFiles}, kUnsubmittedLeft, {}, all, rows},
      {"DeletingQuestions", "DELETE FROM QUESTIONS", {kUnsubmitted, kOldFiles}, kOldFileLeft, {}, all, rows},
      // The question is gone without a transaction around both: nothing leads to its file's row until that is
      // old.
      {"DeletingTheirFiles",
       "DELETE FROM DATAFILES",
       {kUnsubmitted, kOldFiles},
       kOldFileLeft,
       {},
       {"19"},
       rows,
       {},
       {"a.txt", "kept.txt"}},
      {"OldFiles", "SELECT ID1, FILENAME", {kOldFiles}, kOldFileLeft, {}, {"19"}, {"b.txt", "kept.txt"}},
      // The folder is gone, and the next run, which wants to delete it again, fails on that before it comes
      // to the row.
      {"DeletingOldFiles",
       "and FILENAME = 'b.txt'",
       {kOldFiles},
       kClean,
       {},
       {"19"},
       {"b.txt", "kept.txt"},
       {"ORVProcess.cleanup.DeleteSRAttchmentsFilesWithotherstatus caught: Path not found (76). Additional "
        "information: Path not found"},
       {"b.txt", "kept.txt"}},
  };
  return points;
}

struct Case {
  Point point;
  Outage outage;
  friend void PrintTo(const Case& one, std::ostream* out) { *out << one.point.name << NameOf(one.outage); }
};

class CleanUpOnDyingServer {
 public:
  explicit CleanUpOnDyingServer(const Outage& outage)
      : server(outage), environment(server.Itself(), outage.server) {
    Scripting::memory::RegisterClasses(environment.runtime.classes, disk_);
    for (const std::string& file : kAllFiles) disk_->AddFile("/suite/home/Data/" + file, "x");
    for (const char* statement :
         {"INSERT INTO PARAMETERS (PARAM_NAME, PARAM_VALUE) VALUES ('DataFileRelativePath', 'Data'), "
          "('KeepTemporaryFiles', '24')",
          "INSERT INTO QUESTIONS (Q_ID, Q_STATUS, Q_DATE) VALUES (17, 0, '2004-07-01 00:00:00'), "
          "(18, 0, '2004-07-01 00:00:00'), (19, 160, '2004-07-01 00:00:00')",
          "INSERT INTO DATAFILES (ID1, FILENAME, FILETYPE, LASTUPLOAD) VALUES (17, 'a.txt', 1, '2004-07-26 "
          "00:00:00'), "
          "(19, 'b.txt', 1, '2004-07-01 00:00:00'), (20, 'kept.txt', 3, '2004-07-26 00:00:00')",
          "INSERT INTO CHATSESSIONS (SESSIONID) VALUES ('live.txt')",
          "INSERT INTO PREVIEW (PREVIEWTEXT) VALUES ('draft')"}) {
      environment.Run(statement);
    }
  }

  // Another run; its entries in the error log.
  Texts Run() {
    environment.log->clear();
    EXPECT_NO_THROW(OrvaneProcess::CleanUp().Run());
    EXPECT_EQ(environment.adodb->openConnections, 0);
    EXPECT_EQ(environment.adodb->openRecordsets, 0);
    Texts messages;
    for (const LogEntry& entry : *environment.log) messages.push_back(WithoutDriversWords(entry.message));
    return messages;
  }

  Texts Files() const {
    Texts left;
    for (const std::string& file : kAllFiles) {
      if (disk_->Exists("/suite/home/Data/" + file)) left.push_back(file);
    }
    return left;
  }
  Texts Previews() const { return environment.Rows("SELECT PREVIEWTEXT FROM PREVIEW"); }
  Texts Questions() const { return environment.Rows("SELECT Q_ID FROM QUESTIONS ORDER BY Q_ID"); }
  Texts DataFiles() const { return environment.Rows("SELECT FILENAME FROM DATAFILES ORDER BY FILENAME"); }
  std::string RunLog() const { return disk_->Bytes("/suite/OrvLog/OrvCleanUpSvc_log_2004_7_26.txt"); }

  DyingServer server;
  ServerEnvironment environment;

 private:
  Scripting::memory::MemoryDiskPtr disk_ = std::make_shared<Scripting::memory::MemoryDisk>();
};

class CleanUpOnDyingServersTest : public testing::TestWithParam<Case> {
 protected:
  CleanUpOnDyingServer suite_{GetParam().outage};
};

TEST_P(CleanUpOnDyingServersTest, EachSweepReportsItAndTheNextRunDoesWhatIsLeft) {
  const Point& point = GetParam().point;
  suite_.environment.adodb->beforeStatement = [&](const std::string& sql) {
    if (sql.find(point.statement) != std::string::npos) suite_.server.Fail();
  };
  EXPECT_EQ(suite_.Run(), point.errors);
  suite_.environment.adodb->beforeStatement = nullptr;
  EXPECT_TRUE(suite_.server.HasFailed());
  EXPECT_EQ(suite_.RunLog(), kStarted + kStopped);
  EXPECT_EQ(suite_.Files(), point.files);

  suite_.server.Recover();
  EXPECT_EQ(suite_.Previews(), point.previews);
  EXPECT_EQ(suite_.Questions(), point.questions);
  EXPECT_EQ(suite_.DataFiles(), point.dataFiles);

  EXPECT_EQ(suite_.Run(), point.nextErrors);
  EXPECT_EQ(suite_.RunLog(), kStarted + kStopped + kStarted + kStopped);
  EXPECT_EQ(suite_.Files(), kClean);
  EXPECT_THAT(suite_.Previews(), IsEmpty());
  EXPECT_THAT(suite_.Questions(), ElementsAre("19"));
  EXPECT_EQ(suite_.DataFiles(), point.dataFilesInTheEnd);
}

std::vector<Case> AllCases() {
  std::vector<Case> cases;
  for (const Outage& outage : AllOutages()) {
    for (const Point& point : Points()) cases.push_back({point, outage});
  }
  return cases;
}
INSTANTIATE_TEST_SUITE_P(Points, CleanUpOnDyingServersTest, testing::ValuesIn(AllCases()),
                         [](const auto& one) { return one.param.point.name + NameOf(one.param.outage); });

class CleanUpBeforeItsFirstSweepTest : public testing::TestWithParam<Outage> {
 protected:
  void ExpectNothingDoneAndTheNextRunDoesAll() {
    EXPECT_EQ(suite_.Files(), kAllFiles);
    suite_.server.Recover();
    EXPECT_THAT(suite_.Questions(), ElementsAre("17", "18", "19"));
    EXPECT_THAT(suite_.Run(), IsEmpty());
    EXPECT_EQ(suite_.Files(), kClean);
    EXPECT_THAT(suite_.DataFiles(), ElementsAre("kept.txt"));
  }
  CleanUpOnDyingServer suite_{GetParam()};
};

TEST_P(CleanUpBeforeItsFirstSweepTest, SettingsThatCannotBeReadEndTheRunWithoutItsStopLine) {
  suite_.environment.adodb->beforeStatement = [this](const std::string&) { suite_.server.Fail(); };
  EXPECT_THAT(suite_.Run(), ElementsAre(Lost("OrvProcess.cleanup.CleanupFilesandRecords")));
  suite_.environment.adodb->beforeStatement = nullptr;
  EXPECT_EQ(suite_.RunLog(), kStarted);
  ExpectNothingDoneAndTheNextRunDoesAll();
  EXPECT_EQ(suite_.RunLog(), kStarted + kStarted + kStopped);
}

TEST_P(CleanUpBeforeItsFirstSweepTest, AConnectionThatCannotBeMadeEndsTheRunWithoutALine) {
  suite_.server.Fail();
  if (GetParam().what == Outage::Restarted) {  // and takes the connection
    EXPECT_THAT(suite_.Run(), IsEmpty());
    EXPECT_EQ(suite_.Files(), kClean);
    return;
  }
  EXPECT_THAT(suite_.Run(),
              ElementsAre("METHOD: \r\nOrvServiceRequestOrvaneUtilities.GetOrvaneConnection caught: "
                          "<lost>(-2147467259).",
                          "Orvane.Cleanup.StartRun caught: <lost> (-2147467259)."));
  ExpectNothingDoneAndTheNextRunDoesAll();
  EXPECT_EQ(suite_.RunLog(), kStarted + kStopped);
}

INSTANTIATE_TEST_SUITE_P(Servers, CleanUpBeforeItsFirstSweepTest, testing::ValuesIn(AllOutages()),
                         [](const auto& outage) { return NameOf(outage.param); });

}  // namespace
}  // namespace orvane_test
