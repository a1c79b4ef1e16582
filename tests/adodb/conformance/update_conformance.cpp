// Values of every type, and changing rows through record sets.
#include "tests/adodb/conformance/conformance.hpp"

namespace orvane_test {
namespace {

using ADODB::Affect;
using ADODB::CursorType;
using ADODB::LockType;
using automation::DateTime;
using automation::Variant;
using testing::ElementsAre;

TEST_P(Conformance, GivesEveryTypeItsVariant) {
  engine->CreateTable("TYPES", {{"ID", ColumnKind::Key},
                                {"BIG", ColumnKind::BigInteger},
                                {"FLAG", ColumnKind::Boolean},
                                {"MOMENT", ColumnKind::DateTime},
                                {"REALNUMBER", ColumnKind::Double},
                                {"TXT", ColumnKind::Text},
                                {"LONGTXT", ColumnKind::LongText}});
  engine->Run("INSERT INTO TYPES VALUES (1,9000000000," + engine->BooleanLiteral(true) +
              ",'2004-07-26 09:05:03',2.5,'gr\xC3\xB6\xC3\x9F"
              "e','" +
              std::string(100000, 'x') + "')");
  engine->Run("INSERT INTO TYPES VALUES (-2,7," + engine->BooleanLiteral(false) +
              ",'2004-07-26 00:00:00',-1,'','')");
  engine->Run("INSERT INTO TYPES (ID) VALUES (3)");
  const auto connection = Connect();
  const auto rows =
      Open("SELECT * FROM TYPES ORDER BY ID DESC", connection, CursorType::Static, LockType::ReadOnly);
  for (std::size_t i = 1; i < 7; ++i) EXPECT_TRUE(rows->Value(i).IsNull()) << i;
  rows->MoveNext();
  EXPECT_EQ(rows->Value("ID"), Variant(1));
  EXPECT_EQ(rows->Value("BIG"), Variant(std::int64_t{9000000000}));
  EXPECT_EQ(rows->Value("FLAG"), Variant(true));
  EXPECT_EQ(rows->Value("MOMENT"),
            Variant(DateTime::FromParts(
                {.year = 2004, .month = 7, .day = 26, .hour = 9, .minute = 5, .second = 3})));
  EXPECT_EQ(rows->Value("REALNUMBER"), Variant(2.5));
  EXPECT_EQ(rows->Value("TXT"), Variant("gr\xC3\xB6\xC3\x9F"
                                        "e"));
  EXPECT_EQ(automation::ToText(rows->Value("LONGTXT")).size(), 100000u);
  rows->MoveNext();
  EXPECT_EQ(rows->Value("ID"), Variant(-2));
  EXPECT_EQ(automation::ToText(rows->Value("BIG")), "7");
  EXPECT_EQ(rows->Value("FLAG"), Variant(false));
  EXPECT_EQ(rows->Value("MOMENT"),
            Variant(DateTime::FromParts({.year = 2004, .month = 7, .day = 26, .hour = 0})));
  EXPECT_EQ(automation::ToText(rows->Value("REALNUMBER")), "-1");
  EXPECT_EQ(rows->Value("TXT"), Variant(""));
}

TEST_P(Conformance, WritesEveryTypeBack) {
  MakePeople();
  const DateTime seen =
      DateTime::FromParts({.year = 2004, .month = 2, .day = 29, .hour = 23, .minute = 59, .second = 58});
  for (const CursorType cursor : kCursorTypes) {
    const auto connection = Connect();
    const auto rows = Open("SELECT * FROM PEOPLE WHERE ID = 1", connection, cursor, LockType::Optimistic);
    rows->SetValue("NAME", "O'Brien; -- \\ \xE2\x82\xAC");
    rows->SetValue("VISITS", -5);
    rows->SetValue("ACTIVE", true);
    rows->SetValue("SEEN", seen);
    rows->SetValue("NOTE", std::string(70000, 'y'));
    rows->Update();
    EXPECT_EQ(rows->Value("SEEN"), Variant(seen));
    const auto read = Open("SELECT * FROM PEOPLE", connection, CursorType::ForwardOnly, LockType::ReadOnly);
    EXPECT_EQ(read->Value("NAME"), Variant("O'Brien; -- \\ \xE2\x82\xAC"));
    EXPECT_EQ(read->Value("VISITS"), Variant(-5));
    EXPECT_EQ(read->Value("ACTIVE"), Variant(true));
    EXPECT_EQ(read->Value("SEEN"), Variant(seen));
    EXPECT_EQ(automation::ToText(read->Value("NOTE")).size(), 70000u);
    for (const char* column : {"NAME", "VISITS", "ACTIVE", "SEEN", "NOTE"})
      rows->SetValue(column, Variant::Null());
    rows->Update();
    EXPECT_THAT(Rows("SELECT NAME, VISITS, ACTIVE, SEEN, NOTE FROM PEOPLE"),
                ElementsAre("NULL|NULL|NULL|NULL|NULL"));
  }
}

TEST_P(Conformance, ConvertsAValueToTheTypeOfItsColumn) {
  MakePeople();
  const auto connection = Connect();
  const auto rows = Open("SELECT * FROM PEOPLE", connection, CursorType::Keyset, LockType::Optimistic);
  rows->SetValue("SEEN", "7-26-2004 09:05:03");
  rows->SetValue("VISITS", "12");
  rows->SetValue("NAME", 160);
  rows->SetValue("ACTIVE", 1);
  rows->Update();
  EXPECT_THAT(Rows("SELECT NAME, VISITS, SEEN, ACTIVE FROM PEOPLE"),
              ElementsAre("160|12|7/26/2004 09:05:03|True"));
  EXPECT_EQ(NumberOf([&] { rows->SetValue("SEEN", "yesterday"); }), 13);
  EXPECT_EQ(NumberOf([&] { rows->SetValue("VISITS", "many"); }), 13);
}

TEST_P(Conformance, ReadsBackTheNumberThatTheDatabaseGave) {
  MakePeople();
  for (const CursorType cursor : {CursorType::Static, CursorType::Keyset}) {
    const auto connection = Connect();
    const auto rows = NewRecordset();
    rows->SetCursorLocation(ADODB::CursorLocation::Client);
    rows->Open("SELECT * FROM PEOPLE WHERE 0 = 1", connection, cursor, LockType::Optimistic,
               ADODB::kCommandText);
    std::vector<std::string> given;
    for (const char* name : {"first", "second"}) {
      rows->AddNew();
      EXPECT_TRUE(rows->Value("ID").IsNull());
      rows->SetValue("NAME", name);
      rows->Update();
      const std::string id = automation::ToText(rows->Value("ID"));
      EXPECT_THAT(Rows("SELECT NAME FROM PEOPLE WHERE ID = " + id), ElementsAre(name));
      given.push_back(id);
    }
    EXPECT_NE(given[0], given[1]);
    EXPECT_EQ(rows->RecordCount(), 2);
  }
}

TEST_P(Conformance, ChangesAndDeletesTheRowThatItJustAdded) {
  MakePeople();
  const auto connection = Connect();
  for (const CursorType cursor : kCursorTypes) {
    const auto rows = Open("SELECT * FROM PEOPLE", connection, cursor, LockType::Optimistic);
    rows->AddNew();
    rows->SetValue("NAME", "new");
    rows->Update();
    rows->SetValue("NAME", "newer");
    rows->Update();
    EXPECT_THAT(Rows("SELECT NAME FROM PEOPLE ORDER BY ID"), ElementsAre("NULL", "newer"));
    rows->Delete(Affect::Current);
    EXPECT_THAT(Rows("SELECT NAME FROM PEOPLE"), ElementsAre("NULL"));
  }
}

TEST_P(Conformance, InsertsNothingWhenTheDatabaseRejectsAValue) {
  MakeNumbers(2);
  const auto connection = Connect();
  const auto rows =
      Open("SELECT * FROM NUMBERS WHERE 0 = 1", connection, CursorType::Static, LockType::Optimistic);
  rows->AddNew();
  rows->SetValue("ID", 2);
  rows->SetValue("NAME", "again");
  EXPECT_EQ(NumberOf([&] { rows->Update(); }), ADODB::engine::kConstraintViolation);
  rows->Close();
  EXPECT_THAT(Rows("SELECT NAME FROM NUMBERS ORDER BY ID"), ElementsAre("n1", "n2"));
}

TEST_P(Conformance, DeletesTheCurrentRowAndStaysOnIt) {
  for (const CursorType cursor : kCursorTypes) {
    MakeNumbers(3);
    const auto connection = Connect();
    const auto rows = Open("SELECT * FROM NUMBERS", connection, cursor, LockType::Optimistic);
    rows->MoveNext();
    rows->Delete(Affect::Current);
    EXPECT_THAT(Rows("SELECT ID FROM NUMBERS ORDER BY ID"), ElementsAre("1", "3"));
    EXPECT_FALSE(rows->Eof());
    EXPECT_EQ(NumberOf([&] { rows->Value("ID"); }), 3021);
    EXPECT_EQ(NumberOf([&] { rows->Delete(Affect::Current); }), 3021);
    rows->MoveNext();
    EXPECT_EQ(rows->Value("ID"), Variant(3));
    rows->MoveFirst();
    EXPECT_THAT(Walk(*rows, "ID"), ElementsAre("1", "3"));
    if (cursor == CursorType::Static || cursor == CursorType::Keyset) {
      EXPECT_EQ(rows->RecordCount(), 2);
    }
  }
}

TEST_P(Conformance, DeletesRowsHereAndThereWhileWalkingMany) {
  for (const CursorType cursor : kCursorTypes) {
    MakeNumbers(2100);
    const auto connection = Connect();
    const auto rows = Open("SELECT * FROM NUMBERS", connection, cursor, LockType::Optimistic);
    int seen = 0;
    for (; !rows->Eof(); rows->MoveNext()) {
      if (++seen % 20 == 0) rows->Delete(Affect::Current);
    }
    EXPECT_EQ(seen, 2100);
    EXPECT_THAT(Rows("SELECT COUNT(*), MIN(ID), MAX(ID) FROM NUMBERS"), ElementsAre("1995|1|2099"));
  }
}

TEST_P(Conformance, FailsWhenTheRowWasDeletedBySomeoneElse) {
  for (const CursorType cursor : kCursorTypes) {
    MakeNumbers(3);
    const auto connection = Connect();
    const auto rows = Open("SELECT * FROM NUMBERS", connection, cursor, LockType::Optimistic);
    EXPECT_EQ(rows->Value("ID"), Variant(1));
    engine->Run("DELETE FROM NUMBERS WHERE ID = 1");
    const auto error = ErrorOf([&] { rows->Delete(Affect::Current); });
    EXPECT_EQ(error.Number(), ADODB::engine::kRowChanged);
    EXPECT_EQ(
        error.Description(),
        "Row cannot be located for updating. Some values may have been changed since it was last read.");
    rows->SetValue("NAME", "x");
    EXPECT_EQ(NumberOf([&] { rows->Update(); }), ADODB::engine::kRowChanged);
  }
}

TEST_P(Conformance, AnUpdateThatChangesNothingIsNoFailure) {
  MakeNumbers(1);
  const auto connection = Connect();
  const auto rows = Open("SELECT * FROM NUMBERS", connection, CursorType::Dynamic, LockType::Optimistic);
  rows->SetValue("NAME", "n1");
  rows->Update();
  rows->Update();
  EXPECT_THAT(Rows("SELECT NAME FROM NUMBERS"), ElementsAre("n1"));
}

TEST_P(Conformance, WritesAChangeWhenMovingOnAndDropsItWhenClosing) {
  MakeNumbers(3);
  const auto connection = Connect();
  const auto rows = Open("SELECT * FROM NUMBERS", connection, CursorType::Keyset, LockType::Optimistic);
  rows->SetValue("NAME", "first");
  EXPECT_EQ(rows->Value("NAME"), Variant("first"));
  EXPECT_THAT(Rows("SELECT NAME FROM NUMBERS WHERE ID = 1"), ElementsAre("n1"));
  rows->MoveNext();
  EXPECT_THAT(Rows("SELECT NAME FROM NUMBERS WHERE ID = 1"), ElementsAre("first"));
  rows->SetValue("NAME", "second");
  rows->Close();
  EXPECT_THAT(Rows("SELECT NAME FROM NUMBERS WHERE ID = 2"), ElementsAre("n2"));
}

TEST_P(Conformance, ShowsItsOwnChangesWhenItComesBack) {
  MakeNumbers(2000);
  const auto connection = Connect();
  for (const CursorType cursor : {CursorType::Keyset, CursorType::Dynamic, CursorType::Static}) {
    const auto rows = Open("SELECT * FROM NUMBERS", connection, cursor, LockType::Optimistic);
    rows->SetValue("NAME", "mine");
    rows->Update();
    while (!rows->Eof()) rows->MoveNext();
    rows->MoveFirst();
    EXPECT_EQ(rows->Value("NAME"), Variant("mine"));
    rows->SetValue("NAME", "n1");
    rows->Update();
  }
}

TEST_P(Conformance, FollowsARowWhoseKeyItChanges) {
  const auto connection = Connect();
  for (const CursorType cursor : {CursorType::Keyset, CursorType::Static}) {
    MakeNumbers(3);  // anew: an engine may give rows that were updated a place behind the others
    const auto rows = Open("SELECT * FROM NUMBERS", connection, cursor, LockType::Optimistic);
    rows->SetValue("ID", 10);
    rows->Update();
    rows->SetValue("NAME", "ten");
    rows->Update();
    EXPECT_THAT(Rows("SELECT NAME FROM NUMBERS WHERE ID = 10"), ElementsAre("ten"));
    rows->MoveNext();
    EXPECT_EQ(rows->Value("ID"), Variant(2));
    rows->MoveFirst();
    rows->SetValue("ID", 1);
    rows->Update();
  }
}

TEST_P(Conformance, RefusesChangesOnAReadOnlyRecordSet) {
  MakeNumbers(1);
  const auto connection = Connect();
  const auto refuses = [&](const ADODB::RecordsetPtr& rows) {
    EXPECT_EQ(NumberOf([&] { rows->AddNew(); }), 3251);
    EXPECT_EQ(NumberOf([&] { rows->Delete(Affect::Current); }), 3251);
    EXPECT_EQ(NumberOf([&] { rows->SetValue("NAME", 1); }), 3251);
    EXPECT_EQ(NumberOf([&] { rows->Update(); }), 3251);
  };
  for (const CursorType cursor : kCursorTypes) {
    refuses(Open("SELECT * FROM NUMBERS", connection, cursor, LockType::ReadOnly));
  }
  refuses(Open("SELECT DISTINCT NAME FROM NUMBERS", connection, CursorType::Keyset, LockType::Optimistic));
  refuses(
      Open("SELECT a.NAME FROM NUMBERS a, NUMBERS b", connection, CursorType::Keyset, LockType::Optimistic));
  EXPECT_EQ(NumberOf([&] {
              Open("SELECT * FROM NUMBERS", connection, CursorType::Static, LockType::BatchOptimistic);
            }),
            3251);
}

}  // namespace
}  // namespace orvane_test
