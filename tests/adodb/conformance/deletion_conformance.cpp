// Deletions by a condition that tell which rows they removed.
#include "tests/adodb/conformance/conformance.hpp"

namespace orvane_test {
namespace {

using ADODB::CursorType;
using ADODB::Deleted;
using ADODB::LockType;
using automation::Variant;
using testing::ElementsAre;
using testing::IsEmpty;

TEST_P(Conformance, ADeletionTellsTheKeysOfTheRowsThatItRemovedInTheirOrder) {
  MakeNumbers(9);
  const auto connection = Connect();
  const auto gone = connection->ExecuteDelete("DELETE FROM NUMBERS WHERE VALUE <> 1", Deleted::Keys);
  EXPECT_EQ(gone->Fields().Count(), 1U);
  EXPECT_EQ(gone->RecordCount(), 6);
  EXPECT_EQ(gone->Value("ID"), Variant(2)) << "as a record set of the table gives it";
  EXPECT_THAT(Walk(*gone, "ID"), ElementsAre("2", "3", "5", "6", "8", "9"));
  EXPECT_THAT(Rows("SELECT ID FROM NUMBERS ORDER BY ID"), ElementsAre("1", "4", "7"));
}

TEST_P(Conformance, ADeletionTellsTheWholeRowsAsARecordSetWouldHaveGivenThem) {
  engine->CreateTable("TYPES", {{"ID", ColumnKind::Key},
                                {"BIG", ColumnKind::BigInteger},
                                {"FLAG", ColumnKind::Boolean},
                                {"MOMENT", ColumnKind::DateTime},
                                {"REALNUMBER", ColumnKind::Double},
                                {"TXT", ColumnKind::Text},
                                {"LONGTXT", ColumnKind::LongText}});
  engine->Run("INSERT INTO TYPES VALUES (2,9000000000," + engine->BooleanLiteral(true) +
              ",'2004-07-26 09:05:03',2.5,'gr\xC3\xB6\xC3\x9F','" + std::string(100000, 'x') + "')");
  engine->Run("INSERT INTO TYPES (ID) VALUES (1)");
  const auto connection = Connect();
  const auto read =
      Open("SELECT * FROM TYPES ORDER BY ID", connection, CursorType::Static, LockType::ReadOnly);
  const auto gone = connection->ExecuteDelete("DELETE FROM TYPES", Deleted::Rows);
  ASSERT_EQ(gone->Fields().Count(), read->Fields().Count()) << "the key is not told twice";
  for (int row = 0; row < 2; ++row, gone->MoveNext(), read->MoveNext()) {
    for (std::size_t i = 0; i < read->Fields().Count(); ++i) {
      EXPECT_EQ(gone->Fields().Item(i).Name(), read->Fields().Item(i).Name());
      EXPECT_EQ(gone->Value(i), read->Value(i)) << read->Fields().Item(i).Name();
    }
  }
  EXPECT_TRUE(gone->Eof());
  EXPECT_THAT(Rows("SELECT ID FROM TYPES"), IsEmpty());
}

TEST_P(Conformance, ADeletionThroughAnotherTableTellsItsRows) {
  MakeNumbers(6);
  engine->CreateTable("STEPS", {{"ID", ColumnKind::Key}, {"N", ColumnKind::Integer}});
  for (int i = 1; i <= 12; ++i) {
    engine->Run("INSERT INTO STEPS VALUES (" + std::to_string(100 - i) + "," + std::to_string((i + 1) / 2) +
                ")");
  }
  const auto connection = Connect();
  for (const Deleted wanted : {Deleted::Keys, Deleted::Rows}) {
    const std::string value = wanted == Deleted::Keys ? "1" : "2";
    const auto gone = connection->ExecuteDelete(
        ADODB::SqlFragment("Delete from STEPS where N in (select ID from NUMBERS where VALUE=" + value + ")"),
        wanted);
    EXPECT_EQ(gone->Fields().Count(), wanted == Deleted::Keys ? 1U : 2U);
    EXPECT_THAT(Walk(*gone, "ID"), wanted == Deleted::Keys ? ElementsAre("92", "93", "98", "99")
                                                           : ElementsAre("90", "91", "96", "97"));
  }
  EXPECT_THAT(Rows("SELECT ID FROM STEPS ORDER BY ID"), ElementsAre("88", "89", "94", "95"));
}

TEST_P(Conformance, ADeletionOfManyRowsTellsEachOnce) {
  constexpr int kCount = 1500;  // more than a statement takes keys, more than are held as they are
  MakeNumbers(kCount);
  engine->CreateTable("STEPS", {{"ID", ColumnKind::Key}, {"N", ColumnKind::Integer}});
  engine->Run("INSERT INTO STEPS SELECT ID, ID FROM NUMBERS");
  const auto connection = Connect();
  connection->BeginTrans();
  const auto gone = connection->ExecuteDelete(
      "Delete from STEPS where N in (select ID from NUMBERS where ID > 7)", Deleted::Rows);
  EXPECT_EQ(gone->RecordCount(), kCount - 7);
  for (int id = 8; !gone->Eof(); gone->MoveNext(), ++id)
    ASSERT_EQ(automation::ToInt32(gone->Value("ID")), id);
  EXPECT_THAT(Rows("SELECT COUNT(*) FROM STEPS"), ElementsAre(std::to_string(kCount)))
      << "the transaction is the caller's";
  connection->RollbackTrans();
  EXPECT_THAT(Rows("SELECT COUNT(*) FROM STEPS"), ElementsAre(std::to_string(kCount)));
}

TEST_P(Conformance, ADeletionOfNothingGivesAnEmptySet) {
  MakeNumbers(3);
  const auto connection = Connect();
  const auto gone = connection->ExecuteDelete("DELETE FROM NUMBERS WHERE ID > 3", Deleted::Rows);
  EXPECT_TRUE(gone->Eof());
  EXPECT_EQ(gone->RecordCount(), 0);
  EXPECT_EQ(gone->Fields().Count(), 3U);
}

TEST_P(Conformance, ADeletionFromATableWithoutAPrimaryKeyTellsAllColumns) {
  engine->CreateTable("NOTES", {{"A", ColumnKind::Integer}, {"TXT", ColumnKind::Text}});
  for (const char* row : {"(2,'b')", "(1,'a')", "(1,'a')", "(3,'c')"}) {
    engine->Run(std::string("INSERT INTO NOTES VALUES ") + row);
  }
  const auto connection = Connect();
  MakeNumbers(2);
  const auto gone =
      connection->ExecuteDelete("DELETE FROM NOTES WHERE A IN (SELECT ID FROM NUMBERS)", Deleted::Rows);
  EXPECT_THAT(Walk(*gone, "TXT"), testing::UnorderedElementsAre("a", "a", "b"));
  EXPECT_THAT(Rows("SELECT A FROM NOTES"), ElementsAre("3"));
}

TEST_P(Conformance, ADeletionByACompositeKeyTellsWholeKeys) {
  MakeNumbers(3);
  engine->CreateTable("PAIRS",
                      {{"A", ColumnKind::Integer}, {"B", ColumnKind::Integer}, {"V", ColumnKind::Text}},
                      "PRIMARY KEY (B, A)");
  for (int a = 1; a <= 3; ++a) {
    for (int b = 1; b <= 2; ++b) {
      engine->Run("INSERT INTO PAIRS VALUES (" + std::to_string(a) + "," + std::to_string(b) + ",'x')");
    }
  }
  const auto connection = Connect();
  const auto gone = connection->ExecuteDelete(
      "DELETE FROM PAIRS WHERE A IN (SELECT ID FROM NUMBERS WHERE ID <> 2)", Deleted::Keys);
  EXPECT_EQ(gone->RecordCount(), 4);
  // The embedded engine addresses the rows of such a table by their number.
  if (gone->Fields().Count() == 2) {
    std::vector<std::string> keys;
    for (; !gone->Eof(); gone->MoveNext()) {
      keys.push_back(automation::ToText(gone->Value("B")) + "," + automation::ToText(gone->Value("A")));
    }
    EXPECT_THAT(keys, ElementsAre("1,1", "1,3", "2,1", "2,3"));
  } else {
    EXPECT_FALSE(Quirk().losesChangedRowsWithoutKey);
  }
  EXPECT_THAT(Rows("SELECT A, B FROM PAIRS ORDER BY B"), ElementsAre("2|1", "2|2"));
}

TEST_P(Conformance, ADeletionThatIsRefusedDeletesNothingAndRaisesAsExecuteDoes) {
  MakeNumbers(3);
  const auto connection = Connect();
  EXPECT_EQ(NumberOf([&] { connection->ExecuteDelete("SELECT * FROM NUMBERS", Deleted::Rows); }), 3251);
  EXPECT_EQ(NumberOf([&] { connection->ExecuteDelete("UPDATE NUMBERS SET VALUE = 1", Deleted::Rows); }),
            3251);
  ADODB::Statement quoted = "DELETE FROM NUMBERS WHERE NAME='";
  quoted += ADODB::SqlValue("n1' or '1'='1");
  quoted += "'";
  EXPECT_EQ(ErrorOf([&] { connection->ExecuteDelete(quoted, Deleted::Rows); }).Number(),
            ErrorOf([&] { connection->Execute(quoted, nullptr, ADODB::kExecuteNoRecords); }).Number());
  EXPECT_THAT(Rows("SELECT COUNT(*) FROM NUMBERS"), ElementsAre("3"));
  const auto command = automation::CreateObject<ADODB::Command>("ADODB.Command");
  EXPECT_EQ(NumberOf([&] { command->ExecuteDelete(Deleted::Keys); }), 3001);
}

TEST_P(Conformance, ARowThatComesInDuringALockedDeletionIsNeitherDeletedNorTold) {
  if (Quirk().locksWholeDatabase) GTEST_SKIP() << "nobody else writes meanwhile";
  MakeNumbers(4);
  const auto connection = Connect();
  connection->BeginTrans();
  const auto gone = connection->ExecuteDelete(
      "DELETE FROM NUMBERS WHERE ID IN (SELECT ID FROM NUMBERS WHERE VALUE <> 0)", Deleted::Keys);
  engine->Run("INSERT INTO NUMBERS (ID, NAME, VALUE) VALUES (20,'late',1)");
  connection->CommitTrans();
  EXPECT_THAT(Walk(*gone, "ID"), ElementsAre("1", "2", "4"));
  EXPECT_THAT(Rows("SELECT ID FROM NUMBERS ORDER BY ID"), ElementsAre("3", "20"));
}

// So its rows are known before they are gone for good.
TEST_P(Conformance, ADeletionThatTellsItsRowsIsATransactionOfItsOwn) {
  MakeNumbers(9);
  const auto connection = Connect();
  connection->ExecuteDelete("DELETE FROM NUMBERS WHERE VALUE = 1", Deleted::Keys);
  EXPECT_EQ(faults->begins, 1);
  EXPECT_EQ(faults->commits, 1);
  faults->failCommit = true;
  EXPECT_EQ(NumberOf([&] { connection->ExecuteDelete("DELETE FROM NUMBERS", Deleted::Keys); }),
            faults->error.Number());
  faults->failCommit = false;
  EXPECT_EQ(faults->rollbacks, 1);
  EXPECT_THAT(Rows("SELECT COUNT(*) FROM NUMBERS"), ElementsAre("6"));
  connection->BeginTrans();
  connection->ExecuteDelete("DELETE FROM NUMBERS WHERE VALUE = 2", Deleted::Keys);
  connection->CommitTrans();
  EXPECT_EQ(faults->begins, 3) << "none within one that is open";
  EXPECT_THAT(Rows("SELECT COUNT(*) FROM NUMBERS"), ElementsAre("3"));
}

}  // namespace
}  // namespace orvane_test
