// Tables without a primary key.
#include "tests/adodb/conformance/conformance.hpp"

namespace orvane_test {
namespace {

using ADODB::Affect;
using ADODB::CursorType;
using ADODB::LockType;
using ADODB::engine::kRowChanged;
using automation::Variant;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr CursorType kUpdatable[] = {CursorType::ForwardOnly, CursorType::Keyset, CursorType::Dynamic,
                                     CursorType::Static};

void MakeLoose(EngineUnderTest& engine) {
  engine.CreateTable("LOOSE", {{"A", ColumnKind::Integer},
                               {"B", ColumnKind::Text},
                               {"C", ColumnKind::Single},
                               {"D", ColumnKind::DateTime},
                               {"E", ColumnKind::LongText},
                               {"F", ColumnKind::Boolean},
                               {"G", ColumnKind::Decimal}});
  for (const char* row :
       {"1,'x',0.1,'2004-07-26 09:05:03.123','long',NULL,0.1",
        "1,'x',0.1,'2004-07-26 09:05:03.123','long',NULL,0.1",
        "1,'X',0.1,'2004-07-26 09:05:03.123','long',NULL,0.1",
        "1,'x',0.2,'2004-07-26 09:05:03.123','long',NULL,0.1", "2,NULL,NULL,NULL,NULL,NULL,NULL"}) {
    engine.Run(std::string("INSERT INTO LOOSE VALUES (") + row + ")");
  }
}

TEST_P(Conformance, OfEqualRowsExactlyOneIsDeleted) {
  const auto connection = Connect();
  for (const CursorType cursor : kUpdatable) {
    MakeLoose(*engine);
    const auto rows = Open("SELECT * FROM LOOSE", connection, cursor, LockType::Optimistic);
    EXPECT_EQ(rows->Value("B"), Variant("x"));
    rows->Delete(Affect::Current);
    rows->MoveNext();
    EXPECT_THAT(Rows("SELECT COUNT(*) FROM LOOSE"), ElementsAre("4"));
    for (; !rows->Eof(); rows->MoveNext()) rows->Delete(Affect::Current);
    EXPECT_THAT(Rows("SELECT A FROM LOOSE"), IsEmpty());
  }
}

TEST_P(Conformance, OfEqualRowsExactlyOneIsChanged) {
  const auto connection = Connect();
  for (const CursorType cursor : kUpdatable) {
    MakeLoose(*engine);
    const auto rows = Open("SELECT * FROM LOOSE", connection, cursor, LockType::Optimistic);
    rows->SetValue("A", 10);
    rows->Update();
    EXPECT_EQ(rows->Value("A"), Variant(10));
    rows->SetValue("A", 11);
    rows->Update();
    EXPECT_THAT(Rows("SELECT A, B FROM LOOSE WHERE A > 1 ORDER BY A"), ElementsAre("2|NULL", "11|x"));
    rows->Delete(Affect::Current);
    EXPECT_THAT(Rows("SELECT COUNT(*) FROM LOOSE"), ElementsAre("4"));
    EXPECT_THAT(Rows("SELECT COUNT(*) FROM LOOSE WHERE A = 1"), ElementsAre("3"));
    // The row that differs in one letter or in an approximate number is another row.
    for (rows->MoveNext(); rows->Value("B") != Variant("X"); rows->MoveNext()) {
    }
    rows->Delete(Affect::Current);
    EXPECT_THAT(Rows("SELECT COUNT(*) FROM LOOSE WHERE C < 0.15"), ElementsAre("1"));
  }
}

TEST_P(Conformance, ARowWithoutKeyThatSomeoneElseChangedIsNotDeleted) {
  const auto connection = Connect();
  for (const CursorType cursor : kUpdatable) {
    MakeLoose(*engine);
    const auto rows = Open("SELECT * FROM LOOSE WHERE A = 2", connection, cursor, LockType::Optimistic);
    EXPECT_EQ(rows->Value("A"), Variant(2));
    EXPECT_TRUE(rows->Value("B").IsNull());
    engine->Run("UPDATE LOOSE SET B = 'back' WHERE A = 2");
    EXPECT_EQ(NumberOf([&] { rows->Delete(Affect::Current); }), kRowChanged);
    EXPECT_THAT(Rows("SELECT B FROM LOOSE WHERE A = 2"), ElementsAre("back"));
  }
}

TEST_P(Conformance, RowsWithoutKeyAreLookedAtAgainWhenTheyBecomeCurrent) {
  const auto connection = Connect();
  for (const CursorType cursor : {CursorType::Keyset, CursorType::Dynamic}) {
    engine->CreateTable("LOOSE", {{"A", ColumnKind::Integer}, {"B", ColumnKind::Text}});
    for (const char* row : {"1,'a'", "2,'b'", "3,NULL", "4,'d'"}) {
      engine->Run(std::string("INSERT INTO LOOSE VALUES (") + row + ")");
    }
    const auto rows = Open("SELECT B FROM LOOSE WHERE A < 9", connection, cursor, LockType::Optimistic);
    EXPECT_EQ(rows->Value("B"), Variant("a"));
    engine->Run("UPDATE LOOSE SET B = 'changed' WHERE A = 2");
    engine->Run("DELETE FROM LOOSE WHERE A = 4");
    LetRowsGrowOld();
    if (Quirk().losesChangedRowsWithoutKey) {
      EXPECT_THAT(Walk(*rows, "B"), ElementsAre("a", "NULL"));
    } else {
      EXPECT_THAT(Walk(*rows, "B"), ElementsAre("a", "changed", "NULL"));
    }
  }
}

TEST_P(Conformance, AddsAndWalksManyRowsWithoutKey) {
  const auto connection = Connect();
  for (const CursorType cursor : kUpdatable) {
    engine->CreateTable("LOOSE", {{"A", ColumnKind::Integer}, {"B", ColumnKind::Text}});
    std::string sql = "INSERT INTO LOOSE VALUES (1,'n1')";
    for (int i = 2; i <= 1500; ++i) sql += ",(" + std::to_string(i) + ",'n" + std::to_string(i) + "')";
    engine->Run(sql);
    const auto rows = Open("SELECT * FROM LOOSE", connection, cursor, LockType::Optimistic);
    rows->AddNew();
    rows->SetValue("A", 2000);
    rows->Update();
    EXPECT_EQ(rows->Value("A"), Variant(2000));
    rows->MoveFirst();
    int seen = 0;
    for (; !rows->Eof(); rows->MoveNext()) {
      if (++seen % 500 == 0) rows->Delete(Affect::Current);
    }
    EXPECT_EQ(seen, 1501);
    EXPECT_THAT(Rows("SELECT COUNT(*), MAX(A) FROM LOOSE"), ElementsAre("1498|2000"));
  }
}

TEST_P(Conformance, FindsWhatWasAddedToADynamicSetWithoutKey) {
  engine->CreateTable("LOOSE", {{"B", ColumnKind::Text}});
  engine->Run("INSERT INTO LOOSE VALUES ('a')");
  const auto connection = Connect();
  const auto rows = Open("SELECT B FROM LOOSE", connection, CursorType::Dynamic, LockType::Pessimistic);
  for (const char* name : {"early", "late"}) {
    engine->Run(std::string("INSERT INTO LOOSE VALUES ('") + name + "')");
    rows->MoveFirst();
    rows->Find(std::string("B='") + name + "'");
    EXPECT_FALSE(rows->Eof()) << name;
    rows->MoveFirst();
    rows->Find("B='missing'");
    EXPECT_TRUE(rows->Eof());
  }
}

TEST_P(Conformance, TheRowsOfAViewAreNotChanged) {
  engine->Run("DROP VIEW IF EXISTS SEEN");
  MakeNumbers(2);
  engine->Run("CREATE VIEW SEEN AS SELECT ID, NAME FROM NUMBERS");
  const auto connection = Connect();
  for (const CursorType cursor : kUpdatable) {
    const auto rows = Open("SELECT * FROM SEEN", connection, cursor, LockType::Optimistic);
    EXPECT_EQ(NumberOf([&] { rows->Delete(Affect::Current); }), 3251);
  }
  engine->Run("DROP VIEW SEEN");
}

}  // namespace
}  // namespace orvane_test
