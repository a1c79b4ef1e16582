// Walking: cursor types, counts, order, ends, many rows.
#include "tests/adodb/conformance/conformance.hpp"

namespace orvane_test {
namespace {

using ADODB::CursorType;
using ADODB::LockType;
using ADODB::ObjectState;
using automation::Variant;
using testing::ElementsAre;

constexpr CursorType kAllCursors[] = {CursorType::ForwardOnly, CursorType::Keyset, CursorType::Dynamic,
                                      CursorType::Static};

TEST_P(Conformance, WalksEveryRowWithEveryCursorAndLock) {
  MakeNumbers(2500);
  const auto connection = Connect();
  for (const CursorType cursor : kAllCursors) {
    for (const LockType lock : {LockType::ReadOnly, LockType::Pessimistic, LockType::Optimistic}) {
      const auto rows = Open("SELECT * FROM NUMBERS", connection, cursor, lock);
      int expected = 0;
      for (; !rows->Eof(); rows->MoveNext()) ASSERT_EQ(automation::ToInt32(rows->Value("ID")), ++expected);
      EXPECT_EQ(expected, 2500);
      EXPECT_FALSE(rows->Bof());
    }
  }
  EXPECT_EQ(faults->openRows, 0);
  EXPECT_EQ(faults->mostOpenRows, 1) << "no statement stays open while another runs";
}

TEST_P(Conformance, ReportsTheCountAsTheCursorTypeDoes) {
  MakeNumbers(1200);
  const auto connection = Connect();
  const auto count = [&](CursorType cursor, LockType lock) {
    return Open("SELECT ID FROM NUMBERS WHERE ID > 100", connection, cursor, lock)->RecordCount();
  };
  for (const LockType lock : {LockType::ReadOnly, LockType::Optimistic}) {
    EXPECT_EQ(count(CursorType::ForwardOnly, lock), -1);
    EXPECT_EQ(count(CursorType::Dynamic, lock), -1);
    EXPECT_EQ(count(CursorType::Static, lock), 1100);
    EXPECT_EQ(count(CursorType::Keyset, lock), 1100);
  }
}

TEST_P(Conformance, IsAtBothEndsWithoutRows) {
  MakeNumbers(3);
  const auto connection = Connect();
  for (const CursorType cursor : kAllCursors) {
    const auto rows = Open("SELECT * FROM NUMBERS WHERE ID > 10", connection, cursor, LockType::Optimistic);
    EXPECT_TRUE(rows->Bof());
    EXPECT_TRUE(rows->Eof());
    EXPECT_EQ(NumberOf([&] { rows->MoveNext(); }), 3021);
    EXPECT_EQ(NumberOf([&] { rows->MoveFirst(); }), 3021);
    EXPECT_EQ(NumberOf([&] { rows->Value(0); }), 3021);
    EXPECT_EQ(NumberOf([&] { rows->GetRows(); }), 3021);
    EXPECT_EQ(rows->Fields().Count(), 3u);
  }
}

TEST_P(Conformance, StopsAtTheEndAndStartsAgain) {
  MakeNumbers(2);
  const auto connection = Connect();
  for (const CursorType cursor : {CursorType::Keyset, CursorType::Dynamic, CursorType::Static}) {
    const auto rows = Open("SELECT * FROM NUMBERS", connection, cursor, LockType::Optimistic);
    EXPECT_FALSE(rows->Bof());
    rows->MoveNext();
    rows->MoveNext();
    EXPECT_TRUE(rows->Eof());
    EXPECT_EQ(NumberOf([&] { rows->MoveNext(); }), 3021);
    EXPECT_EQ(NumberOf([&] { rows->Value("NAME"); }), 3021);
    rows->MoveFirst();
    EXPECT_FALSE(rows->Eof());
    EXPECT_EQ(rows->Value("NAME"), Variant("n1"));
  }
}

TEST_P(Conformance, KeepsTheOrderOfTheStatement) {
  MakeNumbers(6);
  const auto connection = Connect();
  for (const CursorType cursor : kAllCursors) {
    const auto rows =
        Open("SELECT ID FROM NUMBERS ORDER BY VALUE DESC, ID", connection, cursor, LockType::Optimistic);
    EXPECT_THAT(Walk(*rows, "ID"), ElementsAre("2", "5", "1", "4", "3", "6"));
  }
}

TEST_P(Conformance, ReadsJoinsAndDistinctRowsWithEveryCursor) {
  MakeNumbers(6);
  const auto connection = Connect();
  for (const CursorType cursor : kAllCursors) {
    const auto distinct =
        Open("SELECT DISTINCT VALUE FROM NUMBERS ORDER BY VALUE", connection, cursor, LockType::ReadOnly);
    EXPECT_THAT(Walk(*distinct, "VALUE"), ElementsAre("0", "1", "2"));
    const auto joined =
        Open("SELECT a.NAME FROM NUMBERS a, NUMBERS b WHERE a.ID = b.VALUE AND b.ID < 3 ORDER BY a.ID",
             connection, cursor, LockType::ReadOnly);
    EXPECT_THAT(Walk(*joined, "NAME"), ElementsAre("n1", "n2"));
  }
}

TEST_P(Conformance, FetchesNoMoreThanTheMostRecords) {
  MakeNumbers(50);
  const auto connection = Connect();
  for (const CursorType cursor : kAllCursors) {
    const auto rows = NewRecordset();
    rows->SetMaxRecords(7);
    rows->Open("SELECT * FROM NUMBERS", connection, cursor, LockType::Optimistic, -1);
    EXPECT_EQ(Walk(*rows, "ID").size(), 7u);
  }
}

TEST_P(Conformance, MakesAClientSideCursorAStaticOne) {
  MakeNumbers(5);
  const auto connection = Connect();
  const auto rows = NewRecordset();
  rows->SetCursorLocation(ADODB::CursorLocation::Client);
  rows->Open("SELECT * FROM NUMBERS", connection, CursorType::ForwardOnly, LockType::Optimistic, -1);
  EXPECT_EQ(rows->RecordCount(), 5);
  EXPECT_EQ(NumberOf([&] { rows->SetCursorLocation(ADODB::CursorLocation::Server); }), 3705);
}

TEST_P(Conformance, RefusesEverythingOnAClosedRecordSet) {
  const auto rows = NewRecordset();
  EXPECT_EQ(rows->State(), ObjectState::Closed);
  EXPECT_EQ(NumberOf([&] { rows->Close(); }), 3704);
  EXPECT_EQ(NumberOf([&] { rows->Eof(); }), 3704);
  EXPECT_EQ(NumberOf([&] { rows->MoveNext(); }), 3704);
  EXPECT_EQ(NumberOf([&] { rows->RecordCount(); }), 3704);
  EXPECT_EQ(NumberOf([&] { rows->Fields(); }), 3704);
  EXPECT_EQ(NumberOf([&] { rows->AddNew(); }), 3704);
  EXPECT_EQ(NumberOf([&] { rows->Find("ID=1"); }), 3704);
  EXPECT_EQ(NumberOf([&] { rows->Open("SELECT 1", nullptr, CursorType::Static, LockType::ReadOnly, -1); }),
            3001);
}

TEST_P(Conformance, RefusesToOpenAnOpenRecordSetAndOpensAClosedOneAgain) {
  MakeNumbers(2);
  const auto connection = Connect();
  const auto rows = Open("SELECT * FROM NUMBERS", connection, CursorType::Keyset, LockType::Optimistic);
  const auto again = [&] {
    rows->Open("SELECT NAME FROM NUMBERS WHERE ID = 2", connection, CursorType::Static, LockType::ReadOnly,
               -1);
  };
  EXPECT_EQ(NumberOf(again), 3705);
  EXPECT_EQ(rows->State(), ObjectState::Open);
  rows->Close();
  again();
  EXPECT_THAT(Walk(*rows, "NAME"), ElementsAre("n2"));
}

TEST_P(Conformance, StaysClosedWhenTheStatementFailsOrYieldsNoRows) {
  MakeNumbers(2);
  const auto connection = Connect();
  const auto rows = NewRecordset();
  ErrorOf([&] {
    rows->Open("SELECT * FROM NOSUCHTABLE", connection, CursorType::Keyset, LockType::Optimistic, -1);
  });
  EXPECT_EQ(rows->State(), ObjectState::Closed);
  rows->Open("DELETE FROM NUMBERS", connection, CursorType::Static, LockType::ReadOnly, -1);
  EXPECT_EQ(rows->State(), ObjectState::Closed);
  EXPECT_THAT(Rows("SELECT * FROM NUMBERS"), testing::IsEmpty());
}

TEST_P(Conformance, FindsFieldsByNameInAnyCaseAndByPosition) {
  MakeNumbers(1);
  const auto connection = Connect();
  const auto rows = Open("SELECT * FROM NUMBERS", connection, CursorType::ForwardOnly, LockType::ReadOnly);
  EXPECT_EQ(rows->Fields().Count(), 3u);
  EXPECT_EQ(rows->Value("nAmE"), Variant("n1"));
  EXPECT_EQ(rows->Value(1), Variant("n1"));
  EXPECT_EQ(NumberOf([&] { rows->Value("NOSUCH"); }), 3265);
  EXPECT_EQ(NumberOf([&] { rows->Value(3); }), 3265);
}

TEST_P(Conformance, SpellsColumnNamesAsTheStatementOrTheTableDoes) {
  MakeNumbers(1);
  const auto connection = Connect();
  const auto names = [&](const ADODB::Statement& statement, CursorType cursor) {
    const auto rows = Open(statement, connection, cursor, LockType::ReadOnly);
    std::vector<std::string> result;
    for (std::size_t i = 0; i < rows->Fields().Count(); ++i) result.push_back(rows->Fields().Item(i).Name());
    return result;
  };
  EXPECT_THAT(names("SELECT * FROM NUMBERS", CursorType::ForwardOnly), ElementsAre("ID", "NAME", "VALUE"));
  EXPECT_THAT(names("SELECT * FROM NUMBERS", CursorType::Keyset), ElementsAre("ID", "NAME", "VALUE"));
  EXPECT_THAT(names("SELECT VALUE AS Amount, NAME FROM NUMBERS", CursorType::Dynamic),
              ElementsAre("Amount", "NAME"));
}

TEST_P(Conformance, FetchesTheRemainingRowsAtOnce) {
  MakeNumbers(4);
  const auto connection = Connect();
  const auto rows = Open("SELECT ID, NAME FROM NUMBERS", connection, CursorType::Keyset, LockType::ReadOnly);
  rows->MoveNext();
  const auto values = rows->GetRows();
  ASSERT_EQ(values.size(), 2u);
  EXPECT_EQ(values[0], (std::vector<Variant>{2, 3, 4}));
  EXPECT_EQ(values[1], (std::vector<Variant>{"n2", "n3", "n4"}));
  EXPECT_TRUE(rows->Eof());
}

TEST_P(Conformance, WalksATextKeyWhateverItsOrder) {
  engine->CreateTable("WORDS", {{"WORD", ColumnKind::TextKey}, {"N", ColumnKind::Integer}});
  for (int i = 0; i < 1500; i += 100) {
    std::string sql = "INSERT INTO WORDS VALUES ";
    for (int k = i; k < i + 100; ++k) {
      sql += (k == i ? "('w" : ",('w") + std::to_string(k * 7919 % 1500) + "'," + std::to_string(k) + ")";
    }
    engine->Run(sql);
  }
  const auto connection = Connect();
  for (const CursorType cursor : {CursorType::Keyset, CursorType::Dynamic}) {
    const auto rows = Open("SELECT WORD FROM WORDS", connection, cursor, LockType::Optimistic);
    std::vector<std::string> words = Walk(*rows, "WORD");
    std::sort(words.begin(), words.end());
    EXPECT_EQ(std::unique(words.begin(), words.end()), words.end());
    EXPECT_EQ(words.size(), 1500u);
  }
}

TEST_P(Conformance, WalksWhatASubqueryChoosesInTheOrderOfTheKey) {
  MakeNumbers(2500);
  const auto connection = Connect();
  for (const int count : {0, 1, 30, 999, 1000, 1001, 1500}) {
    // Chosen through the highest of them first.
    const auto rows = Open(
        ADODB::SqlFragment("SELECT * FROM NUMBERS WHERE ID IN (SELECT 2501 - ID FROM NUMBERS WHERE ID > " +
                           std::to_string(2500 - count) + ")"),
        connection, CursorType::Keyset, LockType::Optimistic);
    EXPECT_EQ(rows->RecordCount(), count);
    int expected = 0;
    for (; !rows->Eof(); rows->MoveNext()) ASSERT_EQ(automation::ToInt32(rows->Value("ID")), ++expected);
    EXPECT_EQ(expected, count);
    if (count == 0) continue;
    rows->MoveFirst();
    rows->SetFilter("NAME='n" + std::to_string(count) + "'");
    EXPECT_EQ(automation::ToInt32(rows->Value("ID")), count);
  }
  EXPECT_EQ(faults->openRows, 0);
  EXPECT_EQ(faults->mostOpenRows, 1) << "no statement stays open while another runs";
}

TEST_P(Conformance, WalksAKeyOfTwoColumns) {
  engine->CreateTable("PAIRS",
                      {{"A", ColumnKind::Integer}, {"B", ColumnKind::Integer}, {"N", ColumnKind::Integer}},
                      "PRIMARY KEY (A, B)");
  for (int a = 0; a < 30; ++a) {
    std::string sql = "INSERT INTO PAIRS VALUES ";
    for (int b = 0; b < 50; ++b) {
      sql += (b == 0 ? "(" : ",(") + std::to_string(a) + "," + std::to_string(b) + "," +
             std::to_string(a * 50 + b) + ")";
    }
    engine->Run(sql);
  }
  const auto connection = Connect();
  for (const CursorType cursor : {CursorType::Keyset, CursorType::Dynamic}) {
    const auto rows = Open("SELECT N FROM PAIRS WHERE N <> 7", connection, cursor, LockType::Optimistic);
    EXPECT_EQ(Walk(*rows, "N").size(), 1499u);
    rows->MoveFirst();
    rows->Find("N=0");
    rows->Delete(ADODB::Affect::Current);
    engine->Run("INSERT INTO PAIRS VALUES (0,0,0)");
  }
}

TEST_P(Conformance, KeysetMembershipIsFixedAtOpen) {
  MakeNumbers(1500);
  engine->Run("DELETE FROM NUMBERS WHERE ID = 1200 OR ID = 5");
  const auto connection = Connect();
  const auto rows = Open("SELECT * FROM NUMBERS", connection, CursorType::Keyset, LockType::Optimistic);
  engine->Run("INSERT INTO NUMBERS VALUES (1200,'late',0)");
  engine->Run("INSERT INTO NUMBERS VALUES (5000,'later',0)");
  engine->Run("UPDATE NUMBERS SET NAME = 'changed' WHERE ID = 1300");
  EXPECT_EQ(rows->RecordCount(), 1498);
  std::string changed;
  int seen = 0;
  for (; !rows->Eof(); rows->MoveNext(), ++seen) {
    EXPECT_NE(rows->Value("NAME"), Variant("late"));
    if (rows->Value("ID") == Variant(1300)) changed = automation::ToText(rows->Value("NAME"));
  }
  EXPECT_EQ(seen, 1498);
  EXPECT_EQ(changed, "changed") << "values are those of the database when the row's window is read";
}

TEST_P(Conformance, AKeysetStepsOverARowThatSomeoneElseDeleted) {
  MakeNumbers(1500);
  const auto connection = Connect();
  const auto rows = Open("SELECT * FROM NUMBERS", connection, CursorType::Keyset, LockType::Optimistic);
  engine->Run("DELETE FROM NUMBERS WHERE ID > 1000 AND ID < 1400");
  EXPECT_EQ(Walk(*rows, "ID").size(), 1101u);
}

TEST_P(Conformance, ADynamicCursorMeetsRowsAddedAheadOfIt) {
  MakeNumbers(1500);
  const auto connection = Connect();
  const auto rows = Open("SELECT * FROM NUMBERS", connection, CursorType::Dynamic, LockType::Optimistic);
  engine->Run("INSERT INTO NUMBERS VALUES (5000,'later',0)");
  engine->Run("DELETE FROM NUMBERS WHERE ID = 1200");
  EXPECT_EQ(Walk(*rows, "ID").size(), 1500u);
}

TEST_P(Conformance, AStaticCursorKeepsWhatItSawAtOpen) {
  MakeNumbers(10);
  const auto connection = Connect();
  const auto rows = Open("SELECT * FROM NUMBERS", connection, CursorType::Static, LockType::ReadOnly);
  engine->Run("DELETE FROM NUMBERS");
  EXPECT_EQ(Walk(*rows, "ID").size(), 10u);
}

TEST_P(Conformance, AnOpenRecordSetDoesNotHoldUpOtherConnections) {
  MakeNumbers(3000);
  const auto connection = Connect();
  const auto other = Connect();
  for (const CursorType cursor : kAllCursors) {
    const auto rows = Open("SELECT * FROM NUMBERS", connection, cursor, LockType::Optimistic);
    rows->MoveNext();
    other->Execute("UPDATE NUMBERS SET VALUE = 9 WHERE ID = 2", nullptr, -1);
    other->Execute("UPDATE NUMBERS SET VALUE = 2 WHERE ID = 2", nullptr, -1);
    rows->Close();
  }
}

}  // namespace
}  // namespace orvane_test
