// Rows that others change, add and delete during a walk.
#include "tests/adodb/conformance/conformance.hpp"

namespace orvane_test {
namespace {

using ADODB::Affect;
using ADODB::CursorType;
using ADODB::LockType;
using automation::Variant;
using testing::ElementsAre;

constexpr CursorType kReadAgain[] = {CursorType::Keyset, CursorType::Dynamic};

TEST_P(Conformance, ARowIsAsTheDatabaseHasItWhenItBecomesCurrent) {
  const auto connection = Connect();
  for (const CursorType cursor : kReadAgain) {
    for (const char* order : {"", " ORDER BY ID", " ORDER BY NAME"}) {
      MakeNumbers(5);
      const auto rows = Open(ADODB::SqlFragment(std::string("SELECT ID, NAME FROM NUMBERS") + order),
                             connection, cursor, LockType::Optimistic);
      EXPECT_EQ(rows->Value("NAME"), Variant("n1"));
      engine->Run("UPDATE NUMBERS SET NAME = 'n2 changed' WHERE ID = 2");
      engine->Run("DELETE FROM NUMBERS WHERE ID = 3");
      LetRowsGrowOld();
      EXPECT_EQ(rows->Value("NAME"), Variant("n1")) << "the current row stays as it was read";
      EXPECT_THAT(Walk(*rows, "NAME"), ElementsAre("n1", "n2 changed", "n4", "n5"));
    }
  }
}

TEST_P(Conformance, ADynamicCursorMeetsWhatMeetsItsConditionNow) {
  MakeNumbers(6);
  const auto connection = Connect();
  const auto rows =
      Open("SELECT ID FROM NUMBERS WHERE VALUE < 5", connection, CursorType::Dynamic, LockType::Optimistic);
  EXPECT_EQ(rows->Value("ID"), Variant(1));
  engine->Run("UPDATE NUMBERS SET VALUE = 7 WHERE ID = 2");
  engine->Run("DELETE FROM NUMBERS WHERE ID = 3");
  engine->Run("INSERT INTO NUMBERS VALUES (7,'late',0)");
  LetRowsGrowOld();
  EXPECT_THAT(Walk(*rows, "ID"), ElementsAre("1", "4", "5", "6", "7"));
}

TEST_P(Conformance, ADynamicCursorUsesNoPageOnceTheRunHasWritten) {
  const auto connection = Connect();
  const auto other = Connect();
  engine->CreateTable("NOTES", {{"ID", ColumnKind::Key}, {"NAME", ColumnKind::Text}});
  const std::function<void(ADODB::Recordset&)> writes[] = {
      [](ADODB::Recordset& rows) { rows.Delete(Affect::Current); },
      [](ADODB::Recordset& rows) {
        rows.SetValue("NAME", "mine");
        rows.Update();
      },
      [&](ADODB::Recordset&) { other->Execute("INSERT INTO NOTES VALUES (1,'x')", nullptr, -1); },
      [&](ADODB::Recordset&) {
        const auto notes = Open("SELECT * FROM NOTES", other, CursorType::Static, LockType::Optimistic);
        notes->AddNew();
        notes->SetValue("ID", 2);
        notes->Update();
      },
      [&](ADODB::Recordset&) {
        other->BeginTrans();
        other->CommitTrans();
      }};
  for (const auto& write : writes) {
    MakeNumbers(5);
    const auto rows =
        Open("SELECT * FROM NUMBERS WHERE VALUE < 5", connection, CursorType::Dynamic, LockType::Optimistic);
    EXPECT_EQ(rows->Value("ID"), Variant(1));
    engine->Run("UPDATE NUMBERS SET VALUE = 7 WHERE ID = 2");
    engine->Run("UPDATE NUMBERS SET NAME = 'n3 changed' WHERE ID = 3");
    engine->Run("DELETE FROM NUMBERS WHERE ID = 4");
    write(*rows);
    rows->MoveNext();
    EXPECT_THAT(Walk(*rows, "NAME"), ElementsAre("n3 changed", "n5"));
  }
}

TEST_P(Conformance, APlainWalkReadsAThousandRowsAtATime) {
  MakeNumbers(3500);
  const auto connection = Connect();
  for (const CursorType cursor : kReadAgain) {
    const std::size_t before = faults->statements.size();
    EXPECT_EQ(Walk(*Open("SELECT * FROM NUMBERS", connection, cursor, LockType::Optimistic), "ID").size(),
              3500u);
    // The pages of a dynamic cursor begin with 32 rows and double.
    const std::size_t expected = cursor == CursorType::Dynamic ? 8u : 5u;
    EXPECT_LE(faults->statements.size() - before, expected) << "pages, and the keys of a keyset";
  }
}

TEST_P(Conformance, ADynamicCursorReadsFewRowsBeforeTheFirstWrite) {
  MakeNumbers(1000);
  const auto connection = Connect();
  const std::size_t before = faults->rows;
  const auto rows = Open("SELECT * FROM NUMBERS", connection, CursorType::Dynamic, LockType::Optimistic);
  rows->SetValue("NAME", "mine");
  rows->Update();
  EXPECT_EQ(Walk(*rows, "ID").size(), 1000u);
  EXPECT_LE(faults->rows - before, 32u + 1000) << "the first page, and all rows behind the first";
}

TEST_P(Conformance, ADynamicCursorReadsFewRowsAfterAWriteAndMoreWhileNothingHappens) {
  MakeNumbers(3000);
  const auto connection = Connect();
  const auto rows = Open("SELECT * FROM NUMBERS", connection, CursorType::Dynamic, LockType::Optimistic);
  const std::size_t before = faults->statements.size();
  rows->SetValue("NAME", "mine");
  rows->Update();
  EXPECT_EQ(Walk(*rows, "ID").size(), 3000u);
  // The update, pages of 32, 64, 128, 256, 512 and 1000 rows, and the rest of a thousand.
  EXPECT_LE(faults->statements.size() - before, 9u);
}

TEST_P(Conformance, ADynamicCursorThatWritesAtEachRowReadsFewAnew) {
  MakeNumbers(100);
  const auto connection = Connect();
  const auto rows = Open("SELECT * FROM NUMBERS", connection, CursorType::Dynamic, LockType::Optimistic);
  const std::size_t before = faults->rows;
  for (; !rows->Eof(); rows->MoveNext()) {
    rows->SetValue("NAME", "mine");
    rows->Update();
  }
  // 32, 16 and 8 rows, and 4 at a time from then on.
  EXPECT_LE(faults->rows - before, 32u + 16 + 8 + 96 * 4);
  EXPECT_THAT(Rows("SELECT COUNT(*) FROM NUMBERS WHERE NAME = 'mine'"), ElementsAre("100"));
}

TEST_P(Conformance, ASlowWalkReadsFewRowsThatGrowOldUnseen) {
  MakeNumbers(3000);
  const auto connection = Connect();
  for (const CursorType cursor : kReadAgain) {
    const auto rows = Open("SELECT * FROM NUMBERS", connection, cursor, LockType::Optimistic);
    const std::size_t before = faults->rows;
    std::size_t seen = 0;
    for (; !rows->Eof(); rows->MoveNext(), ++seen) now += std::chrono::milliseconds(1);
    EXPECT_EQ(seen, 3000u);
    EXPECT_LE(faults->rows - before, 3000u);
  }
}

TEST_P(Conformance, AKeysetReadsNothingAgainForItsOwnDeletions) {
  MakeNumbers(1000);
  const auto connection = Connect();
  const auto rows = Open("SELECT * FROM NUMBERS", connection, CursorType::Keyset, LockType::Optimistic);
  const std::size_t before = faults->statements.size();
  for (; !rows->Eof(); rows->MoveNext()) rows->Delete(Affect::Current);
  EXPECT_LE(faults->statements.size() - before, 1001u);
  EXPECT_THAT(Rows("SELECT COUNT(*) FROM NUMBERS"), ElementsAre("0"));
}

TEST_P(Conformance, AWalkThatTakesItsTimeAtEachRowComesToItsEnd) {
  MakeNumbers(100);
  const auto connection = Connect();
  for (const CursorType cursor : kReadAgain) {
    const auto rows = Open("SELECT * FROM NUMBERS", connection, cursor, LockType::Optimistic);
    int seen = 0;
    for (; !rows->Eof(); rows->MoveNext(), ++seen) {
      EXPECT_EQ(rows->Value("ID"), Variant(seen + 1));
      LetRowsGrowOld();
    }
    EXPECT_EQ(seen, 100);
  }
}

TEST_P(Conformance, StartsAgainAtRowsThatCameInAtTheFront) {
  MakeNumbers(3);
  const auto connection = Connect();
  const auto rows = Open("SELECT * FROM NUMBERS", connection, CursorType::Dynamic, LockType::Optimistic);
  rows->Delete(Affect::Current);
  engine->Run("INSERT INTO NUMBERS VALUES (0,'late',0)");
  rows->MoveFirst();
  EXPECT_THAT(Walk(*rows, "ID"), ElementsAre("0", "2", "3"));
}

TEST_P(Conformance, MeetsARowWhoseKeyItChangedAgainInAKeysetLargerThanAWindow) {
  MakeNumbers(2500);
  const auto connection = Connect();
  const auto rows = Open("SELECT * FROM NUMBERS", connection, CursorType::Keyset, LockType::Optimistic);
  for (int i = 0; i < 4; ++i) rows->MoveNext();
  rows->SetValue("ID", 9000);
  rows->Update();
  std::vector<std::string> expected;
  for (int i = 6; i <= 2500; ++i) expected.push_back(std::to_string(i));
  rows->MoveNext();
  EXPECT_EQ(Walk(*rows, "ID"), expected);
  const std::size_t before = faults->statements.size();
  expected.insert(expected.begin(), {"1", "2", "3", "4", "9000"});
  rows->MoveFirst();
  EXPECT_EQ(Walk(*rows, "ID"), expected);
  EXPECT_LT(faults->statements.size() - before, 40u) << "windows behind the changed key, not single rows";
}

TEST_P(Conformance, WalksAKeysetInAnOrderOfItsOwn) {
  MakeNumbers(2500);
  const auto connection = Connect();
  const auto rows = Open("SELECT ID FROM NUMBERS ORDER BY VALUE DESC, ID DESC", connection,
                         CursorType::Keyset, LockType::Optimistic);
  EXPECT_EQ(rows->RecordCount(), 2500);
  std::vector<std::string> expected;
  for (const int value : {2, 1, 0}) {
    for (int i = 2500; i > 0; --i) {
      if (i % 3 == value) expected.push_back(std::to_string(i));
    }
  }
  EXPECT_EQ(Walk(*rows, "ID"), expected);
  const auto none = Open("SELECT ID FROM NUMBERS WHERE ID < 0 ORDER BY VALUE", connection, CursorType::Keyset,
                         LockType::Optimistic);
  EXPECT_TRUE(none->Eof());
  EXPECT_EQ(none->Fields().Count(), 1u);
}

}  // namespace
}  // namespace orvane_test
