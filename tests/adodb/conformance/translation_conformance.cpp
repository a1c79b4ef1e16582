// The suite's own SQL: the tokens that a dialect rewrites mean the same on every engine.
#include "tests/adodb/conformance/conformance.hpp"

namespace orvane_test {
namespace {

using ADODB::CursorType;
using ADODB::LockType;
using automation::Variant;
using testing::ElementsAre;
using testing::IsEmpty;

class HistoryMaker {
 public:
  explicit HistoryMaker(EngineUnderTest& engine) {
    engine.CreateTable("HISTORY", {{"Q_ID", ColumnKind::Key},
                                   {"Q_ORIGINATOR", ColumnKind::Text},
                                   {"EMAILID", ColumnKind::Text},
                                   {"ENDSTATUSTIME", ColumnKind::DateTime}});
    engine.Run("INSERT INTO HISTORY VALUES (1,'jdoe',NULL,'2004-07-16 09:05:02')");
    engine.Run("INSERT INTO HISTORY VALUES (2,'jdoe','a@b','2004-07-16 09:05:03')");
    engine.Run("INSERT INTO HISTORY VALUES (3,'zed',NULL,'2004-07-16 09:05:04')");
    engine.Run("INSERT INTO HISTORY VALUES (4,NULL,'a@b',NULL)");
    engine.Run("INSERT INTO HISTORY VALUES (5,'zed','','2004-12-01 00:00:00')");
  }
};

TEST_P(Conformance, ComparesDateAddWithATimestampLiteral) {
  const HistoryMaker made(*engine);
  const auto connection = Connect();
  const auto rows = Open("select * from HISTORY where dateadd(d,10,ENDSTATUSTIME)<{ts '2004-07-26 09:05:03'}",
                         connection, CursorType::Static, LockType::ReadOnly);
  EXPECT_THAT(Walk(*rows, "Q_ID"), ElementsAre("1"));
  const auto back =
      Open("select * from HISTORY where dateadd(d,-137,ENDSTATUSTIME)<{ts '2004-07-17 00:00:01'}", connection,
           CursorType::Keyset, LockType::Optimistic);
  EXPECT_THAT(Walk(*back, "Q_ID"), ElementsAre("1", "2", "3", "5"));
}

TEST_P(Conformance, ComparesDateAddWithALocalDateTimeText) {
  const HistoryMaker made(*engine);
  const auto connection = Connect();
  const auto rows = Open(
      "select * from HISTORY where dateadd(d,10,ENDSTATUSTIME)<'7-26-2004 09:05:03' and Q_ORIGINATOR='jdoe'",
      connection, CursorType::Keyset, LockType::Optimistic);
  EXPECT_THAT(Walk(*rows, "Q_ID"), ElementsAre("1"));
  runtime.locale->dayFirst = true;
  runtime.locale->separator = ".";
  const auto dayFirst = Open("select * from HISTORY where dateadd(d,10,ENDSTATUSTIME)<'26.7.2004 09:05:04'",
                             connection, CursorType::Static, LockType::ReadOnly);
  EXPECT_THAT(Walk(*dayFirst, "Q_ID"), ElementsAre("1", "2"));
  // 1 December 2004 for who writes the day first, 12 January 2004 for others.
  const auto other = Open("select * from HISTORY where '1.12.2004' = dateadd(d,0,ENDSTATUSTIME)", connection,
                          CursorType::Static, LockType::ReadOnly);
  EXPECT_THAT(Walk(*other, "Q_ID"), ElementsAre("5"));
  const auto error = ErrorOf([&] {
    Open("select * from HISTORY where dateadd(d,10,ENDSTATUSTIME)<'soon'", connection, CursorType::Static,
         LockType::ReadOnly);
  });
  EXPECT_EQ(error.SqlState(), "22007");
}

TEST_P(Conformance, DeletesByALocalDateTimeTextInASubquery) {
  const HistoryMaker made(*engine);
  MakeNumbers(5);
  const auto connection = Connect();
  std::int64_t affected = 0;
  connection->Execute(
      "Delete from NUMBERS where ID in (select Q_ID from HISTORY where "
      "dateadd(d,10,ENDSTATUSTIME)<'7-26-2004 09:05:04'"
      " and Q_ORIGINATOR='jdoe')",
      &affected, -1);
  EXPECT_EQ(affected, 2);
  EXPECT_THAT(Rows("SELECT ID FROM NUMBERS ORDER BY ID"), ElementsAre("3", "4", "5"));
}

TEST_P(Conformance, JoinsTextsWithPlus) {
  const HistoryMaker made(*engine);
  const auto connection = Connect();
  const auto rows = Open(
      "select distinct (Q_ORIGINATOR + isnull(EMAILID,'')),Q_ORIGINATOR,EMAILID from HISTORY where "
      "dateadd(d,0,ENDSTATUSTIME)<{ts '2005-01-01 00:00:00'}",
      connection, CursorType::Keyset, LockType::ReadOnly);
  // 'zed' with a null address and 'zed' with an empty one differ in the third column.
  EXPECT_EQ(rows->RecordCount(), 4);
  std::vector<std::string> joined = {};
  for (; !rows->Eof(); rows->MoveNext()) joined.push_back(automation::ToText(rows->Value(0)));
  EXPECT_THAT(joined, testing::UnorderedElementsAre("jdoe", "jdoea@b", "zed", "zed"));
  const auto null = Open("select Q_ORIGINATOR + isnull(EMAILID,'') from HISTORY where Q_ID = 4", connection,
                         CursorType::Static, LockType::ReadOnly);
  EXPECT_TRUE(null->Value(0).IsNull());
}

TEST_P(Conformance, LeavesPlusBetweenNumbersAlone) {
  MakeNumbers(3);
  const auto connection = Connect();
  const auto rows = Open("SELECT ID + VALUE AS TOTAL FROM NUMBERS ORDER BY ID", connection,
                         CursorType::Static, LockType::ReadOnly);
  EXPECT_THAT(Walk(*rows, "TOTAL"), ElementsAre("2", "4", "3"));
}

TEST_P(Conformance, LeavesTokensInsideTextsAlone) {
  MakeNumbers(1);
  const auto connection = Connect();
  connection->Execute("UPDATE NUMBERS SET NAME = 'isnull(a,'''') {ts ''x''} + dateadd(d,1,b)' WHERE ID = 1",
                      nullptr, -1);
  EXPECT_THAT(Rows("SELECT NAME FROM NUMBERS"), ElementsAre("isnull(a,'') {ts 'x'} + dateadd(d,1,b)"));
}

TEST_P(Conformance, DeletesByAVeryLongChainOfEqualities) {
  MakeNumbers(6000);
  const auto connection = Connect();
  ADODB::Statement statement = "DELETE FROM NUMBERS WHERE ";
  for (int id = 1; id <= 5000; ++id) {
    statement += " (ID = ";
    statement += ADODB::SqlValue(id);
    statement += " AND VALUE =1) or ";
  }
  statement.CutLast(3);
  std::int64_t affected = 0;
  connection->Execute(statement, &affected, ADODB::kExecuteNoRecords);
  EXPECT_EQ(affected, 1667);
  EXPECT_THAT(Rows("SELECT COUNT(*) FROM NUMBERS"), ElementsAre("4333"));
}

TEST_P(Conformance, DeletesByAVeryLongChainWithTexts) {
  MakeNumbers(3000);
  const auto connection = Connect();
  ADODB::Statement statement = "DELETE FROM NUMBERS WHERE ";
  for (int id = 1; id <= 2000; ++id) {
    statement += " (ID = ";
    statement += ADODB::SqlValue(id);
    statement += " and NAME = '";
    statement += ADODB::SqlValue("n" + std::to_string(id % 2 == 0 ? id : id + 1));
    statement += "' ) or ";
  }
  statement.CutLast(3);
  std::int64_t affected = 0;
  connection->Execute(statement, &affected, ADODB::kExecuteNoRecords);
  EXPECT_EQ(affected, 1000);
}

TEST_P(Conformance, DeletesByALongChainOfOtherConditionsInOneStatement) {
  MakeNumbers(1000);
  const auto connection = Connect();
  ADODB::Statement statement = "DELETE FROM NUMBERS WHERE ";
  for (int id = 1; id <= 500; ++id) {
    statement += " (ID = ";
    statement += ADODB::SqlValue(id);
    statement += " AND VALUE < 2) or ";
  }
  statement.CutLast(3);
  const std::size_t before = faults->statements.size();
  std::int64_t affected = 0;
  connection->Execute(statement, &affected, -1);
  EXPECT_EQ(affected, 333);
  EXPECT_EQ(faults->statements.size(), before + 1);
}

}  // namespace
}  // namespace orvane_test
