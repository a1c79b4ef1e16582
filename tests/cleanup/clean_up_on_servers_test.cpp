// The clean-up job on real database servers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "jobs/cleanup/clean_up.hpp"
#include "platform/adodb/odbc/provider.hpp"
#include "platform/adodb/registration.hpp"
#include "tests/doubles/memory/registration.hpp"
#include "tests/servers/server_database.hpp"
#include "tests/support/test_runtime.hpp"

namespace orvane_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class CleanUpOnServersTest : public testing::TestWithParam<std::string> {
 protected:
  CleanUpOnServersTest() {
    database_.RunSchemaFile(GetParam() + ".sql");
    database_.GrantJobs("grants-" + GetParam() + ".sql");
    runtime_.configuration->connectionStrings[{"Orvane", "Orvane"}] = database_.JobsConnectionString();
    ADODB::RegisterClasses(runtime_.runtime.classes, {ADODB::odbc::MakeProvider()});
    Scripting::memory::RegisterClasses(runtime_.runtime.classes, disk_);
    disk_->AddFolder("/suite/home/Data");
    database_.Execute(
        "INSERT INTO PARAMETERS (PARAM_NAME, PARAM_VALUE) VALUES ('DataFileRelativePath', 'Data'), "
        "('KeepTemporaryFiles', '24')");
  }

  std::vector<std::string> FirstColumn(const std::string& sql) const {
    std::vector<std::string> values;
    const auto session = database_.Connect();
    const auto rows = session->Query(sql, {});
    while (rows->Next()) values.push_back(automation::ToTextOrEmpty(rows->Value(0)));
    return values;
  }

  TestRuntime runtime_;
  ServerDatabase database_{GetParam()};
  Scripting::memory::MemoryDiskPtr disk_ = std::make_shared<Scripting::memory::MemoryDisk>();
};

INSTANTIATE_TEST_SUITE_P(Engines, CleanUpOnServersTest, testing::Values("postgresql", "mariadb"),
                         [](const auto& engine) { return engine.param; });

TEST_P(CleanUpOnServersTest, LeavesTheRowsAndFilesThatMustStay) {
  database_.Execute(
      "INSERT INTO QUESTIONS (Q_ID, Q_STATUS, Q_DATE) VALUES (17, 0, '2004-07-25 09:05:02'), "
      "(18, 0, '2004-07-25 09:05:03'), (19, 160, '2004-07-01 00:00:00')");
  database_.Execute(
      "INSERT INTO DATAFILES (ID1, FILENAME, FILETYPE, LASTUPLOAD) VALUES (17, 'a.txt', 1, '2004-07-26 "
      "00:00:00'), "
      "(19, 'Report.TXT', 1, '2004-07-01 00:00:00'), (20, 'kept.txt', 3, '2004-07-26 00:00:00')");
  database_.Execute("INSERT INTO CHATSESSIONS (SESSIONID) VALUES ('live.txt')");
  database_.Execute("INSERT INTO PREVIEW (PREVIEWTEXT) VALUES ('draft')");
  for (const char* file : {"SRATTACHMENTS/17Q/a.txt", "SRATTACHMENTS/19Q/report.txt",
                           "SRATTACHMENTS/20A/kept.txt", "CHAT/live.txt", "CHAT/orphan.txt"}) {
    disk_->AddFile(std::string("/suite/home/Data/") + file, "x");
  }

  OrvaneProcess::CleanUp().Run();

  EXPECT_THAT(*runtime_.log, IsEmpty());
  EXPECT_THAT(FirstColumn("SELECT Q_ID FROM QUESTIONS ORDER BY Q_ID"), ElementsAre("18", "19"));
  EXPECT_THAT(FirstColumn("SELECT FILENAME FROM DATAFILES"), ElementsAre("kept.txt"));
  EXPECT_THAT(FirstColumn("SELECT PREVIEWTEXT FROM PREVIEW"), IsEmpty());
  EXPECT_FALSE(disk_->Exists("/suite/home/Data/SRATTACHMENTS/17Q"));
  EXPECT_FALSE(disk_->Exists("/suite/home/Data/SRATTACHMENTS/19Q"));
  EXPECT_TRUE(disk_->Exists("/suite/home/Data/SRATTACHMENTS/20A/kept.txt"));
  EXPECT_TRUE(disk_->Exists("/suite/home/Data/CHAT/live.txt"));
  EXPECT_FALSE(disk_->Exists("/suite/home/Data/CHAT/orphan.txt"));
}

TEST_P(CleanUpOnServersTest, FiftyThousandNeverSubmittedQuestionsGoByOneStatement) {
  constexpr int kQuestions = 50'000;
  constexpr int kBatch = 1'000;
  for (int first = 1; first <= kQuestions; first += kBatch) {
    std::string questions = "INSERT INTO QUESTIONS (Q_ID, Q_STATUS, Q_DATE) VALUES ";
    std::string files = "INSERT INTO DATAFILES (ID1, FILENAME, FILETYPE, LASTUPLOAD) VALUES ";
    for (int id = first; id < first + kBatch; ++id) {
      const std::string separator = id == first ? "" : ", ";
      questions += separator + "(" + std::to_string(id) + ", 0, '2001-02-03 04:05:06')";
      files += separator + "(" + std::to_string(id) + ", 'a.txt', 1, '2004-07-26 00:00:00')";
    }
    database_.Execute(questions);
    database_.Execute(files);
  }

  OrvaneProcess::CleanUp().Run();

  EXPECT_THAT(*runtime_.log, IsEmpty());
  EXPECT_THAT(FirstColumn("SELECT count(*) FROM QUESTIONS"), ElementsAre("0"));
  EXPECT_THAT(FirstColumn("SELECT count(*) FROM DATAFILES"), ElementsAre("0"));
}

}  // namespace
}  // namespace orvane_test
