#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/adodb/command.hpp"
#include "platform/adodb/recordset.hpp"
#include "tests/support/sqlite_database.hpp"

namespace {

using testing::ElementsAre;

class EngineTest : public testing::Test {
 protected:
  ADODB::ConnectionPtr Connect() {
    auto connection = automation::CreateObject<ADODB::Connection>("ADODB.Connection");
    connection->Open(databases.orvane.ConnectionString(), "", "", -1);
    return connection;
  }
  static ADODB::RecordsetPtr NewRecordset() {
    return automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
  }

  orvane_test::TestRuntime runtime;
  orvane_test::SuiteDatabases databases{runtime};
};

TEST_F(EngineTest, DeletesRowsOfAKeysetWhileWalkingIt) {
  databases.orvane.Run(
      "CREATE TABLE PROSPECT(NAME TEXT PRIMARY KEY, PENDINGQUESTIONS INTEGER);"
      "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 5000)"
      "INSERT INTO PROSPECT SELECT 'p' || (9999 - i), i % 3 FROM n");
  const auto connection = Connect();
  const auto rows = NewRecordset();
  rows->Open("SELECT * FROM PROSPECT", connection, ADODB::CursorType::Keyset, ADODB::LockType::Optimistic,
             -1);
  EXPECT_EQ(rows->RecordCount(), 5000);
  int seen = 0;
  for (; !rows->Eof(); rows->MoveNext(), ++seen) {
    if (automation::ToInt32(rows->Value("pendingquestions")) == 0) rows->Delete(ADODB::Affect::Current);
  }
  EXPECT_EQ(seen, 5000);
  EXPECT_EQ(databases.orvane.Value("SELECT count(*) FROM PROSPECT"), "3334");
  EXPECT_EQ(databases.faults->mostOpenRows, 1);
}

TEST_F(EngineTest, ReadsBackTheGeneratedKey) {
  databases.orvane.Run("CREATE TABLE TRANSACTIONS(T_ID INTEGER PRIMARY KEY, Q_ID INTEGER, T_DATE DATETIME)");
  const auto connection = Connect();
  const auto rows = NewRecordset();
  rows->SetCursorLocation(ADODB::CursorLocation::Client);
  rows->Open("SELECT * FROM TRANSACTIONS WHERE 0 = 1", connection, ADODB::CursorType::Static,
             ADODB::LockType::Optimistic, ADODB::kCommandText);
  for (int expected = 1; expected <= 2; ++expected) {
    rows->AddNew();
    rows->SetValue("Q_ID", 17);
    rows->SetValue("T_DATE", automation::Variant("7-26-2004 09:05:03"));
    rows->Update();
    EXPECT_EQ(automation::ToInt32(rows->Value("T_ID")), expected);
  }
  EXPECT_THAT(databases.orvane.Rows("SELECT * FROM TRANSACTIONS"),
              ElementsAre("1|17|2004-07-26 09:05:03", "2|17|2004-07-26 09:05:03"));
}

TEST_F(EngineTest, FindsForwardAndStartsAgainFromTheFirst) {
  databases.orvane.Run(
      "CREATE TABLE CHATSESSIONS(SESSIONID TEXT); INSERT INTO CHATSESSIONS VALUES('a'),('b'),('c')");
  const auto connection = Connect();
  const auto rows = NewRecordset();
  rows->Open("SELECT SESSIONID FROM CHATSESSIONS", connection, ADODB::CursorType::Dynamic,
             ADODB::LockType::Pessimistic, -1);
  ASSERT_FALSE(rows->Bof() && rows->Eof());
  rows->MoveFirst();
  for (const char* name : {"b", "a", "c", "x", "b"}) {
    rows->Find(std::string("SESSIONID='") + name + "'");
    EXPECT_EQ(rows->Eof(), std::string(name) == "x");
    if (!rows->Eof()) {
      EXPECT_EQ(rows->Value(0), automation::Variant(name));
    }
    rows->MoveFirst();
  }
  EXPECT_EQ(rows->Value(0), automation::Variant("a"));
}

TEST_F(EngineTest, SelectsAndDeletesByTheSuitesDateCondition) {
  databases.orvane.Run(
      "CREATE TABLE QUESTIONHISTORY(Q_ID INTEGER PRIMARY KEY, Q_ORIGINATOR VARCHAR(20), EMAILID VARCHAR(50),"
      " PROSPECT BIT, ENDSTATUSTIME DATETIME);"
      "INSERT INTO QUESTIONHISTORY VALUES(1,'jdoe',NULL,0,'2004-07-16 09:05:02'),(2,'jdoe','x',1,"
      "'2004-07-16 09:05:03'),(3,'jdoe','y',0,NULL)");
  const auto connection = Connect();
  const auto rows = NewRecordset();
  rows->Open(
      "select distinct (Q_ORIGINATOR + isnull(EMAILID,'')),Q_ORIGINATOR,EMAILID,PROSPECT from "
      "QUESTIONHISTORY "
      "where dateadd(d,10,ENDSTATUSTIME)<{ts '2004-07-26 09:05:04'}",
      connection, ADODB::CursorType::Keyset, ADODB::LockType::ReadOnly, -1);
  EXPECT_EQ(rows->RecordCount(), 2);
  const auto values = rows->GetRows();
  EXPECT_EQ(values[0], (std::vector<automation::Variant>{"jdoe", "jdoex"}));
  EXPECT_EQ(values[3], (std::vector<automation::Variant>{false, true}));
  const auto command = automation::CreateObject<ADODB::Command>("ADODB.Command");
  command->SetActiveConnection(connection);
  command->SetCommandText(
      "Delete from QUESTIONHISTORY where dateadd(d,10,ENDSTATUSTIME)<'7-26-2004 09:05:03' and "
      "Q_ORIGINATOR='jdoe'");
  std::int64_t affected = 0;
  connection->BeginTrans();
  command->Execute(&affected, -1);
  connection->CommitTrans();
  EXPECT_EQ(affected, 1);
  EXPECT_THAT(databases.orvane.Rows("SELECT Q_ID FROM QUESTIONHISTORY"), ElementsAre("2", "3"));
}

// The rows of such a table have no number: the key, with all its columns, is their only address.
TEST_F(EngineTest, WalksAndChangesATableWithoutRowNumbersByItsKey) {
  databases.orvane.Run(
      "CREATE TABLE PAIRS(A INTEGER, B VARCHAR(20), N INTEGER, PRIMARY KEY(A, B)) WITHOUT ROWID;"
      "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < 2399)"
      "INSERT INTO PAIRS SELECT i / 100, 'b' || (i % 100), i FROM n");
  const auto connection = Connect();
  for (const auto cursor :
       {ADODB::CursorType::Keyset, ADODB::CursorType::Dynamic, ADODB::CursorType::Static}) {
    const auto rows = NewRecordset();
    rows->Open("SELECT * FROM PAIRS WHERE N < 9000", connection, cursor, ADODB::LockType::Optimistic, -1);
    int seen = 0;
    for (; !rows->Eof(); rows->MoveNext()) {
      if (++seen % 700 != 0) continue;
      rows->SetValue("N", -seen);
      rows->Update();
      rows->MoveNext();
      ++seen;
      rows->Delete(ADODB::Affect::Current);
    }
    EXPECT_EQ(seen, 2400);
    EXPECT_EQ(databases.orvane.Value("SELECT count(*) FROM PAIRS"), "2397");
    EXPECT_THAT(databases.orvane.Rows("SELECT N FROM PAIRS WHERE N < 0 ORDER BY N DESC"),
                ElementsAre("-700", "-1400", "-2100"));
    rows->MoveFirst();
    rows->Find("N=-1400");
    ASSERT_FALSE(rows->Eof());
    rows->SetValue("B", "elsewhere");
    rows->Update();
    rows->Delete(ADODB::Affect::Current);
    EXPECT_EQ(databases.orvane.Value("SELECT count(*) FROM PAIRS WHERE N = -1400"), "0");
    databases.orvane.Run(
        "DELETE FROM PAIRS; WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < 2399)"
        "INSERT INTO PAIRS SELECT i / 100, 'b' || (i % 100), i FROM n");
  }
}

// A file made by hand may hold a date or a Boolean written in any way: a row that still reads as it did is
// deleted.
TEST_F(EngineTest, ARowStillReadsAsItDidHoweverItsValuesAreWritten) {
  databases.orvane.Run(
      "CREATE TABLE ODD(ID INTEGER PRIMARY KEY, D DATETIME, B BIT, T VARCHAR(10), N INTEGER, X);"
      "INSERT INTO ODD VALUES(1,'2004-07-26',2,X'6162','words',5),(2,'2004-07-26T09:05',0.5,7,5.5,'text'),"
      "(3,'2004-07-26 09:05:03.5','TRUE',NULL,X'6162',X'6162'),(4,20040726,'maybe',1.5,NULL,NULL),"
      "(5,'no date',-1,'','12 ',2.5)");
  const auto connection = Connect();
  const auto rows = NewRecordset();
  rows->Open("SELECT * FROM ODD", connection, ADODB::CursorType::Keyset, ADODB::LockType::Optimistic, -1);
  for (; !rows->Eof(); rows->MoveNext()) {
    for (std::size_t i = 0; i < rows->Fields().Count(); ++i) rows->Value(i);
    EXPECT_NO_THROW(rows->Delete(ADODB::Affect::Current));
  }
  EXPECT_EQ(databases.orvane.Value("SELECT count(*) FROM ODD"), "0");
}

}  // namespace
