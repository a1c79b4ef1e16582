#include "host/explain/explanation.hpp"

#include <gmock/gmock.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "components/registration/register_jobs.hpp"
#include "host/explain/subject.hpp"
#include "platform/adodb/recordset.hpp"
#include "platform/automation/runtime.hpp"
#include "suite/database/suite_connection.hpp"
#include "tests/support/sqlite_database.hpp"
#include "tests/support/temporary_folder.hpp"
#include "tests/support/test_runtime.hpp"

namespace orvane::host {
namespace {

using ADODB::SqlValue;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

const OrvaneProcess::JobNeeds& NeedsOf(std::string_view progId) {
  for (const auto& needs : OrvaneProcess::NeedsOfJobs()) {
    if (needs.progId == progId) return needs;
  }
  throw std::runtime_error("no such job");
}

// A suite with two customers, and the reads and effects of a job that a test makes by hand.
class ExplanationTest : public testing::Test {
 protected:
  ExplanationTest() {
    databases_.orvane.MakeSuiteTables();
    databases_.orvane.Run(
        "INSERT INTO PROSPECT(PROSPECTID,EMAILID) VALUES(7,'ann@a.example'),(8,'o''brien@b.example');"
        "INSERT INTO QUESTIONS(Q_ID,Q_ORIGINATOR,EMAILID,Q_STATUS) VALUES"
        "(1,'ann','ann@a.example',150),(2,'ann','ann@a.example',150),(7,'bob','bob@b.example',150);"
        "INSERT INTO QUESTIONHISTORY(Q_ID,Q_ORIGINATOR) VALUES(11,'ann'),(12,'ann'),(13,'bob');"
        "INSERT INTO TRANSACTIONS(T_ID,Q_ID) VALUES(100,11),(101,13);"
        "INSERT INTO REMINDER(Q_ID,R_STATUS) VALUES(1,150),(2,120),(7,150);"
        "INSERT INTO DATAFILES(ID1,FILENAME,FILETYPE) VALUES(1,'a.txt',1),(7,'a.txt',3);"
        "INSERT INTO PARAMETERS VALUES('ArchiveAfter','30'),('KeepTemporaryFiles','24')");
  }

  Subject Find(const std::string& key, std::string_view job) {
    using ADODB::engine::ConnectionString;
    ConnectionString text = ConnectionString::Parse(databases_.orvane.ConnectionString());
    const auto providers = orvane_test::TestProviders();
    return FindRows(key, NeedsOf(job), *ADODB::engine::ProviderOf(providers, text)->Connect(text));
  }
  // "TABLE key,key"
  static std::vector<std::string> Named(const Subject& subject) {
    std::vector<std::string> names;
    for (const SubjectRow& row : subject.rows) {
      std::string text = row.table;
      for (const auto& part : row.key)
        text += (&part == &row.key.front() ? " " : ",") + automation::ToText(part.value);
      names.push_back(std::move(text));
    }
    return names;
  }

  // What the job reads from here on is heard.
  Explanation& Explain(const std::string& key, std::string_view job) {
    subject_ = Find(key, job);
    explanation_ = std::make_unique<Explanation>(subject_);
    effects::HearRows(heard_, runtime_.runtime.classes, *explanation_);
    return *explanation_;
  }
  ADODB::RecordsetPtr Open(const ADODB::Statement& sql) {
    auto rows = automation::As<ADODB::Recordset>(heard_.Create("ADODB.Recordset"));
    rows->Open(sql, connection_, ADODB::CursorType::Static, ADODB::LockType::ReadOnly, -1);
    return rows;
  }
  static effects::EntryPtr Entry(std::uint64_t seq, effects::Entry::What what) {
    return std::make_shared<effects::Entry>(effects::Entry{seq, {}, std::move(what)});
  }
  static effects::Effect Mail() { return effects::MailSending{"x@y.example", "subject"}; }
  static effects::Effect Deletion(const std::string& table, const std::string& column, std::int32_t key) {
    return effects::RowChange{ADODB::Change::Delete, table, {{column, key}}, false, {}};
  }

  orvane_test::TestRuntime runtime_;
  orvane_test::SuiteDatabases databases_{runtime_};
  ADODB::ConnectionPtr connection_ = suite::OpenConnection("Orvane", "Orvane");
  automation::ClassTable heard_;
  Subject subject_;
  std::unique_ptr<Explanation> explanation_;
};

TEST_F(ExplanationTest, AKeyStandsForTheRowsOfTheJobsTables) {
  EXPECT_THAT(Named(Find("ann@a.example", OrvaneProcess::kDormantUserExpiryProgId)),
              ElementsAre("PROSPECT 7"));
  EXPECT_THAT(Named(Find("8", OrvaneProcess::kDormantUserExpiryProgId)), ElementsAre("PROSPECT 8"));
  EXPECT_THAT(Named(Find("ann", OrvaneProcess::kArchiveProgId)),
              UnorderedElementsAre("QUESTIONHISTORY 11", "QUESTIONHISTORY 12", "TRANSACTIONS 100"));
  EXPECT_THAT(Named(Find("13", OrvaneProcess::kArchiveProgId)),
              UnorderedElementsAre("QUESTIONHISTORY 13", "TRANSACTIONS 101"));
  EXPECT_THAT(Named(Find("ann@a.example", OrvaneProcess::kSolveOnNoResponseProgId)),
              UnorderedElementsAre("QUESTIONS 1", "QUESTIONS 2", "REMINDER 1,150", "REMINDER 2,120"));
  EXPECT_THAT(Named(Find("a.txt", OrvaneProcess::kCleanUpProgId)),
              UnorderedElementsAre("DATAFILES 1,1,a.txt", "DATAFILES 7,3,a.txt"));
}

TEST_F(ExplanationTest, AKeyIsAValueAndNeverSql) {
  EXPECT_THAT(Named(Find("o'brien@b.example", OrvaneProcess::kDormantUserExpiryProgId)),
              ElementsAre("PROSPECT 8"));
  EXPECT_TRUE(Find("' OR '1'='1", OrvaneProcess::kDormantUserExpiryProgId).IsUnknown());
  EXPECT_TRUE(Find("99999999999999", OrvaneProcess::kArchiveProgId).IsUnknown());
}

TEST_F(ExplanationTest, TablesThatCannotBeReadAreNamed) {
  databases_.orvane.Run("DROP TABLE PROSPECT");
  const Subject subject = Find("7", OrvaneProcess::kDormantUserExpiryProgId);
  ASSERT_EQ(subject.notLookedInto.size(), 1U);
  EXPECT_THAT(subject.notLookedInto.front(), testing::HasSubstr("PROSPECT: no such table"));
}

TEST_F(ExplanationTest, FilesAreFoundByTheirNamesInAnyCase) {
  orvane_test::TemporaryFolder folder;
  folder.Write("1Q/A.TXT", "");
  folder.Write("1Q/b.txt", "");
  std::filesystem::create_directory(folder.Path() / "a.txt");
  EXPECT_THAT(FindFiles("a.txt", folder.Path()), ElementsAre((folder.Path() / "1Q/A.TXT").string()));
  EXPECT_THAT(FindFiles("a.txt", folder.Path() / "none"), IsEmpty());
}

TEST_F(ExplanationTest, ARowIsKnownByItsKeyAndTheColumnsThatWereTakenAreKept) {
  const Explanation& explanation = Explain("1", OrvaneProcess::kSolveOnNoResponseProgId);
  const auto rows = Open("SELECT * FROM REMINDER WHERE R_STATUS= 150");
  for (; !rows->Eof(); rows->MoveNext()) rows->Value("T1_DATE");
  const std::size_t reminder = 1;
  ASSERT_EQ(subject_.rows[reminder].table, "REMINDER");
  const auto readings = explanation.ReadingsOf(reminder);
  ASSERT_EQ(readings.size(), 1U);
  EXPECT_TRUE(readings[0].byKey);
  EXPECT_EQ(readings[0].statement, "SELECT * FROM REMINDER WHERE R_STATUS= 150");
  EXPECT_THAT(readings[0].taken, ElementsAre("T1_DATE"));
  EXPECT_THAT(explanation.StatementsWithout(reminder), IsEmpty());
  EXPECT_THAT(explanation.ReadingsOf(0), IsEmpty());
}

TEST_F(ExplanationTest, ARowThatWasNotReturnedHasTheStatement) {
  const Explanation& explanation = Explain("2", OrvaneProcess::kSolveOnNoResponseProgId);
  Open("SELECT * FROM REMINDER WHERE R_STATUS= 150");
  EXPECT_THAT(explanation.ReadingsOf(1), IsEmpty());
  EXPECT_THAT(explanation.StatementsWithout(1), ElementsAre("SELECT * FROM REMINDER WHERE R_STATUS= 150"));
}

TEST_F(ExplanationTest, AStatementThatAsksByTheKeyGivesNoOtherRowThatLooksTheSame) {
  const Explanation& explanation = Explain("1", OrvaneProcess::kSolveOnNoResponseProgId);
  for (const std::int32_t id : {1, 2}) {
    Open(ADODB::Statement("select Q_ORIGINATOR,EMAILID from QUESTIONS where Q_ID = ") + SqlValue(id));
  }
  const auto readings = explanation.ReadingsOf(0);
  ASSERT_EQ(readings.size(), 1U);
  EXPECT_EQ(readings[0].statement, "select Q_ORIGINATOR,EMAILID from QUESTIONS where Q_ID = 1");
  EXPECT_TRUE(readings[0].byKey);
  EXPECT_THAT(explanation.StatementsWithout(0), IsEmpty());
}

TEST_F(ExplanationTest, AStatementForAnotherKeySaysNothingOfARow) {
  const Explanation& explanation = Explain("ann", OrvaneProcess::kSolveOnNoResponseProgId);
  Open(ADODB::Statement("select * from QUESTIONS where Q_STATUS = 160 and Q_ID = ") + SqlValue(2));
  EXPECT_THAT(explanation.StatementsWithout(0), IsEmpty());
  EXPECT_THAT(explanation.StatementsWithout(1),
              ElementsAre("select * from QUESTIONS where Q_STATUS = 160 and Q_ID = 2"));
}

TEST_F(ExplanationTest, AResultWithoutTheKeyShowsARowInPart) {
  const Explanation& explanation = Explain("ann", OrvaneProcess::kArchiveProgId);
  Open("select distinct Q_ORIGINATOR,EMAILID from QUESTIONHISTORY");
  for (const std::size_t row : {0U, 1U}) {
    ASSERT_EQ(explanation.ReadingsOf(row).size(), 1U);
    EXPECT_FALSE(explanation.ReadingsOf(row)[0].byKey);
  }
  // One of somebody else's values alone says nothing.
  Open("select Q_STATUS from QUESTIONHISTORY");
  EXPECT_EQ(explanation.ReadingsOf(0).size(), 1U);
}

TEST_F(ExplanationTest, WhatWasAskedOfOthersAgainAndAgainIsLeftOut) {
  const Explanation& explanation = Explain("12", OrvaneProcess::kArchiveProgId);
  const ADODB::Statement selection = "select * from QUESTIONHISTORY where Q_ID > 12 and Q_ORIGINATOR = '";
  for (const char* customer : {"bob", "ann", "eve"}) Open(selection + SqlValue(customer) + "'");
  EXPECT_THAT(explanation.StatementsWithout(0),
              ElementsAre("select * from QUESTIONHISTORY where Q_ID > 12 and Q_ORIGINATOR = 'ann'"));
  const ADODB::Statement other = "select * from QUESTIONHISTORY where Q_ID > 13 and Q_ORIGINATOR = '";
  for (const char* customer : {"bob", "eve"}) Open(other + SqlValue(customer) + "'");
  EXPECT_EQ(explanation.StatementsWithout(0).size(), 1U);
}

TEST_F(ExplanationTest, SettingsAreToldByTheirNames) {
  const Explanation& explanation = Explain("1", OrvaneProcess::kCleanUpProgId);
  Open(ADODB::Statement("select PARAM_VALUE from PARAMETERS where PARAM_NAME = '") +
       SqlValue("ArchiveAfter") + "'");
  const auto rows = Open("Select PARAM_NAME, PARAM_VALUE from PARAMETERS order by PARAM_NAME");
  for (; !rows->Eof(); rows->MoveNext()) {
  }
  EXPECT_THAT(explanation.Parameters(),
              ElementsAre(testing::Pair("ArchiveAfter", "30"), testing::Pair("KeepTemporaryFiles", "24")));
}

TEST_F(ExplanationTest, WhatTakesPlaceWhileTheJobStandsOnARowBelongsToIt) {
  Explanation& explanation = Explain("1", OrvaneProcess::kSolveOnNoResponseProgId);
  std::uint64_t seq = 0;
  explanation.OnEntry(Entry(++seq, Mail()));
  {
    const auto rows = Open("SELECT * FROM REMINDER WHERE R_STATUS= 150");
    for (; !rows->Eof(); rows->MoveNext()) explanation.OnEntry(Entry(++seq, Mail()));
  }
  explanation.OnEntry(Entry(++seq, Mail()));
  ASSERT_EQ(explanation.Deeds().size(), 1U);
  EXPECT_EQ(explanation.Deeds()[0].entry->seq, 2U);
}

TEST_F(ExplanationTest, WhatFollowsTheEndOfASetBelongsToItsRowsUnlessTheJobLookedForOne) {
  Explanation& explanation = Explain("11", OrvaneProcess::kArchiveProgId);
  const auto rows = Open("select * from QUESTIONHISTORY where Q_ORIGINATOR = 'ann'");
  for (; !rows->Eof(); rows->MoveNext()) {
  }
  explanation.OnEntry(Entry(1, Mail()));
  EXPECT_EQ(explanation.Deeds().size(), 1U);
  rows->MoveFirst();
  rows->Find("Q_ID=99");
  explanation.OnEntry(Entry(2, Mail()));
  EXPECT_EQ(explanation.Deeds().size(), 1U);
}

TEST_F(ExplanationTest, ChangesBelongToTheirRowsWhereverTheJobStands) {
  Explanation& explanation = Explain("11", OrvaneProcess::kArchiveProgId);
  explanation.OnEntry(Entry(1, Deletion("QUESTIONHISTORY", "Q_ID", 12)));
  explanation.OnEntry(Entry(2, Deletion("QUESTIONHISTORY", "Q_ID", 11)));
  explanation.OnEntry(Entry(3, effects::Effect(effects::RowsChange{ADODB::Change::Delete,
                                                                   "TRANSACTIONS",
                                                                   {{{"T_ID", 99}}, {{"T_ID", 100}}},
                                                                   true,
                                                                   {{{"T_ID", 99}}, {{"T_ID", 100}}}})));
  explanation.OnEntry(Entry(4, effects::Effect(effects::RowsChange{
                                   ADODB::Change::Delete, "TRANSACTIONS", {{{"T_ID", 99}}}, false, {}})));
  ASSERT_EQ(explanation.Deeds().size(), 2U);
  EXPECT_THAT(explanation.Deeds()[0].rows, ElementsAre(0U));
  const auto& own =
      std::get<effects::RowsChange>(std::get<effects::Effect>(explanation.Deeds()[1].entry->what));
  EXPECT_EQ(own.keys, (std::vector<ADODB::NamedRow>{{{"T_ID", 100}}}));
  EXPECT_EQ(own.before.size(), 1U);
}

TEST_F(ExplanationTest, FailuresAndRolledBackChangesAreTold) {
  Explanation& explanation = Explain("11", OrvaneProcess::kArchiveProgId);
  using Kind = effects::TransactionStep::Kind;
  const auto first = Entry(1, Deletion("QUESTIONHISTORY", "Q_ID", 11));
  explanation.OnEntry(first);
  explanation.OnEntry(
      Entry(2, effects::Failure{first, automation::Error(automation::ErrorNumber::PermissionDenied)}));
  explanation.OnEntry(Entry(3, effects::Effect(effects::TransactionStep{Kind::Begin})));
  explanation.OnEntry(Entry(4, Deletion("QUESTIONHISTORY", "Q_ID", 11)));
  explanation.OnEntry(Entry(5, effects::Effect(effects::TransactionStep{Kind::Rollback})));
  explanation.OnEntry(Entry(6, effects::Effect(effects::TransactionStep{Kind::Begin})));
  explanation.OnEntry(Entry(7, Deletion("QUESTIONHISTORY", "Q_ID", 11)));
  explanation.OnEntry(Entry(8, effects::Effect(effects::TransactionStep{Kind::Commit})));
  ASSERT_EQ(explanation.Deeds().size(), 3U);
  EXPECT_EQ(explanation.Deeds()[0].outcome, Deed::Outcome::Failed);
  EXPECT_EQ(explanation.Deeds()[0].error, "Permission denied (70)");
  EXPECT_EQ(explanation.Deeds()[1].outcome, Deed::Outcome::Undone);
  EXPECT_EQ(explanation.Deeds()[2].outcome, Deed::Outcome::Done);
}

TEST_F(ExplanationTest, FilesBelongByTheirName) {
  Explanation& explanation = Explain("a.txt", OrvaneProcess::kCleanUpProgId);
  using Kind = effects::FileChange::Kind;
  explanation.Listed("\\suite\\Data\\CHAT\\a.txt");
  explanation.AccessTimeRead("/suite/Data/CHAT/a.txt");
  explanation.OnEntry(
      Entry(1, effects::Effect(effects::FileChange{Kind::Delete, "/suite/Data/CHAT/A.txt", "CHAT"})));
  explanation.OnEntry(
      Entry(2, effects::Effect(effects::FileChange{Kind::Delete, "/suite/Data/CHAT/b.txt", "CHAT"})));
  ASSERT_EQ(explanation.Files().size(), 1U);
  EXPECT_TRUE(explanation.Files()[0].listed);
  EXPECT_TRUE(explanation.Files()[0].timeRead);
  EXPECT_EQ(explanation.Deeds().size(), 1U);
}

TEST_F(ExplanationTest, NothingIsHeardBehindTheEndOfTheRun) {
  Explanation& explanation = Explain("7", OrvaneProcess::kDormantUserExpiryProgId);
  explanation.OnEntry(Entry(1, effects::RunEnd{}));
  Open("select count(*) from PROSPECT");
  EXPECT_THAT(explanation.StatementsWithout(0), IsEmpty());
}

}  // namespace
}  // namespace orvane::host
