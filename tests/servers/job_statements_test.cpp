// The jobs' statements on real servers, below the cursor engine: they run, and mean the same on each.
#include "tests/servers/job_statements.hpp"

#include <gmock/gmock.h>

#include <memory>
#include <set>
#include <string>

#include "platform/adodb/sql/checked_statement.hpp"
#include "platform/adodb/sql/translation.hpp"
#include "platform/automation/error.hpp"
#include "tests/servers/server_database.hpp"
#include "tests/support/test_runtime.hpp"

namespace {

using automation::Variant;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

class JobStatementsTest : public testing::TestWithParam<std::string> {
 protected:
  JobStatementsTest() {
    database_.RunSchemaFile(GetParam() + ".sql");
    catalogue_.RunSchemaFile(GetParam() + "-ecatalog.sql");
  }

  std::string Translated(const std::string& sql) const {
    const ADODB::Statement statement = ADODB::SqlFragment(sql);
    const auto& dialect = session_->GetDialect();
    return ADODB::engine::Translate(ADODB::engine::CheckText(statement, dialect), dialect).text;
  }

  std::int64_t Execute(const std::string& sql) { return session_->Execute(Translated(sql), {}); }

  // The first column of every row.
  std::vector<std::string> FirstColumn(const std::string& sql) {
    std::vector<std::string> values;
    const auto rows = session_->Query(Translated(sql), {});
    while (rows->Next()) values.push_back(automation::ToTextOrEmpty(rows->Value(0)));
    return values;
  }

  orvane_test::TestRuntime runtime_;
  orvane_test::ServerDatabase database_{GetParam()};
  orvane_test::ServerDatabase catalogue_{GetParam()};
  std::unique_ptr<ADODB::engine::Session> session_ = database_.Connect();
};

TEST_P(JobStatementsTest, AllRun) {
  const auto catalogue = catalogue_.Connect();
  for (const auto& statement : orvane_test::JobStatements()) {
    try {
      (statement.catalogue ? catalogue : session_)->Query(Translated(statement.sql), {});
    } catch (const automation::Error& error) {
      ADD_FAILURE() << statement.name << ": " << error.Description();
    }
  }
}

TEST_P(JobStatementsTest, CompareAMomentWithDatesToTheSecond) {
  Execute(
      "insert into QUESTIONS (Q_ID, Q_STATUS, Q_DATE) values (1, 0, {ts '2004-07-05 08:02:59'}), "
      "(2, 0, {ts '2004-07-05 08:03:00'}), (3, 0, null), (4, 5, {ts '2004-07-01 00:00:00'})");
  EXPECT_THAT(
      FirstColumn("SELECT * FROM QUESTIONS WHERE Q_STATUS = 0 AND Q_DATE < {ts '2004-07-05 08:03:00'}"),
      ElementsAre("1"));
}

TEST_P(JobStatementsTest, MeanTheSameMomentInEveryDateOrder) {
  Execute(
      "insert into QUESTIONHISTORY (Q_ID, Q_ORIGINATOR, ENDSTATUSTIME) values "
      "(1, 'jdoe', {ts '2004-07-07 09:05:02'}), (2, 'jdoe', {ts '2004-07-07 09:05:03'}), "
      "(3, 'jdoe', {ts '2004-08-01 00:00:00'}), (4, 'JDOE', {ts '2004-01-01 00:00:00'}), (5, 'jdoe', null)");
  const auto selected = [&](const std::string& moment) {
    return FirstColumn("select * from QUESTIONHISTORY where dateadd(d,1,ENDSTATUSTIME)<'" + moment +
                       "' and Q_ORIGINATOR='jdoe'");
  };
  EXPECT_THAT(selected("7-8-2004 09:05:03"), ElementsAre("1"));
  runtime_.locale->dayFirst = true;
  EXPECT_THAT(selected("8-7-2004 09:05:03"), ElementsAre("1"));
  EXPECT_THAT(selected("2004-7-8 09:05:03"), ElementsAre("1"));
}

TEST_P(JobStatementsTest, TellOriginatorsApartByCaseAndByMailAddress) {
  Execute(
      "insert into QUESTIONHISTORY (Q_ID, Q_ORIGINATOR, EMAILID, ENDSTATUSTIME) values "
      "(1, 'jdoe', null, {ts '2004-01-01 00:00:00'}), (2, 'jdoe', null, {ts '2004-01-02 00:00:00'}), "
      "(3, 'JDOE', null, {ts '2004-01-01 00:00:00'}), (4, 'guest', 'a@b.example', {ts '2004-01-01 "
      "00:00:00'}), "
      "(5, 'guest', 'c@d.example', {ts '2004-01-01 00:00:00'}), (6, 'late', null, {ts '2004-07-20 "
      "00:00:00'}), "
      "(7, 'never', null, null)");
  EXPECT_THAT(
      FirstColumn("select distinct (Q_ORIGINATOR + isnull(EMAILID,'')),Q_ORIGINATOR,EMAILID,PROSPECT from "
                  "QUESTIONHISTORY where dateadd(d,30,ENDSTATUSTIME)<{ts '2004-07-26 09:05:03'}"),
      UnorderedElementsAre("jdoe", "JDOE", "guesta@b.example", "guestc@d.example"));
}

TEST_P(JobStatementsTest, DeleteThroughTheQuestionsThatGoNext) {
  Execute(
      "insert into QUESTIONHISTORY (Q_ID, Q_ORIGINATOR, ENDSTATUSTIME) values "
      "(1, 'jdoe', {ts '2004-01-01 00:00:00'}), (2, 'other', {ts '2004-01-01 00:00:00'})");
  Execute("insert into TRANSACTIONS (Q_ID, T_NAME) values (1, 'a'), (1, 'b'), (2, 'c')");
  EXPECT_EQ(Execute("Delete from TRANSACTIONS where Q_ID in (select Q_ID from QUESTIONHISTORY where "
                    "dateadd(d,30,ENDSTATUSTIME)<'7-26-2004 09:05:03' and Q_ORIGINATOR='jdoe')"),
            2);
  EXPECT_EQ(Execute("Delete from QUESTIONHISTORY where dateadd(d,30,ENDSTATUSTIME)<'7-26-2004 09:05:03' and "
                    "Q_ORIGINATOR='jdoe'"),
            1);
  EXPECT_THAT(FirstColumn("select Q_ID from TRANSACTIONS"), ElementsAre("2"));
}

TEST_P(JobStatementsTest, MatchFileNamesLetterForLetter) {
  Execute(
      "insert into DATAFILES (ID1, FILENAME, FILETYPE, LASTUPLOAD) values (17, 'a.txt', 1, null), "
      "(17, 'A.TXT', 1, null), (18, 'x\\', 3, null), (19, 'a.txt', 1, null)");
  EXPECT_EQ(
      Execute(
          "DELETE FROM DATAFILES WHERE  (ID1 = 17 and FILENAME = 'a.txt' and  FILETYPE = 1 ) or  (ID1 = 18 "
          "and FILENAME = 'x\\' and  FILETYPE = 3 ) "),
      2);
  EXPECT_THAT(FirstColumn("select FILENAME from DATAFILES order by ID1"), ElementsAre("A.TXT", "a.txt"));
}

// 50,000 terms as they stand take an engine minutes.
TEST_P(JobStatementsTest, RunChainsOfTensOfThousandsOfTermsInSeconds) {
  constexpr int kTerms = 50'000;
  std::string terms;
  for (int i = 0; i < kTerms; ++i) {
    terms += (i == 0 ? " (ID1 = " : "or  (ID1 = ") + std::to_string(i) + " AND FILETYPE =1) ";
  }
  Execute(
      "insert into DATAFILES (ID1, FILENAME, FILETYPE) values (7, 'a', 1), (7, 'b', 3), (49999, 'c', 1), "
      "(50000, 'd', 1)");
  EXPECT_EQ(Execute("DELETE FROM DATAFILES WHERE " + terms), 2);
  EXPECT_THAT(FirstColumn("select FILENAME from DATAFILES order by FILENAME"), ElementsAre("b", "d"));
}

INSTANTIATE_TEST_SUITE_P(Servers, JobStatementsTest, testing::Values("postgresql", "mariadb"),
                         [](const testing::TestParamInfo<std::string>& server) { return server.param; });

}  // namespace
