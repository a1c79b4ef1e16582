// Find and Filter.
#include "tests/adodb/conformance/conformance.hpp"

namespace orvane_test {
namespace {

using ADODB::CursorType;
using ADODB::LockType;
using automation::Variant;
using testing::ElementsAre;

constexpr CursorType kSearchable[] = {CursorType::Keyset, CursorType::Dynamic, CursorType::Static};

TEST_P(Conformance, FindsForwardFromTheCurrentRow) {
  MakeNumbers(2000);
  const auto connection = Connect();
  for (const CursorType cursor : kSearchable) {
    const auto rows = Open("SELECT * FROM NUMBERS", connection, cursor, LockType::Pessimistic);
    rows->Find("NAME='n1500'");
    EXPECT_EQ(rows->Value("ID"), Variant(1500));
    rows->Find("NAME='n1500'");
    EXPECT_EQ(rows->Value("ID"), Variant(1500)) << "the current row counts";
    rows->Find("VALUE=1");
    EXPECT_EQ(rows->Value("ID"), Variant(1501));
    rows->Find("NAME='n3'");
    EXPECT_TRUE(rows->Eof()) << "rows before the current one do not count";
    EXPECT_EQ(NumberOf([&] { rows->Find("NAME='n3'"); }), 3021);
    rows->MoveFirst();
    rows->Find("[name] = 'n3'");
    EXPECT_EQ(rows->Value("ID"), Variant(3));
    rows->MoveNext();
    EXPECT_EQ(rows->Value("ID"), Variant(4));
  }
}

TEST_P(Conformance, FindsAgainAndAgainFromTheFirst) {
  MakeNumbers(300);
  const auto connection = Connect();
  const auto rows = Open("SELECT NAME FROM NUMBERS", connection, CursorType::Dynamic, LockType::Pessimistic);
  EXPECT_FALSE(rows->Bof() && rows->Eof());
  rows->MoveFirst();
  const auto before = faults->statements.size();
  int found = 0;
  for (int i = 0; i < 600; ++i) {
    rows->Find("NAME='n" + std::to_string(i) + "'");
    if (!rows->Eof()) ++found;
    rows->MoveFirst();
  }
  EXPECT_EQ(found, 299 + 1);
  EXPECT_LE(faults->statements.size() - before, 310u)
      << "at most one question to the database for each missing value";
}

TEST_P(Conformance, FindsWhatWasAddedToADynamicSetMeanwhile) {
  MakeNumbers(10);
  const auto connection = Connect();
  const auto rows = Open("SELECT * FROM NUMBERS", connection, CursorType::Dynamic, LockType::Pessimistic);
  rows->Find("NAME='late'");
  EXPECT_TRUE(rows->Eof());
  engine->Run("INSERT INTO NUMBERS VALUES (0,'late',5)");
  rows->MoveFirst();
  rows->Find("NAME='late'");
  ASSERT_FALSE(rows->Eof());
  EXPECT_EQ(rows->Value("VALUE"), Variant(5));
}

TEST_P(Conformance, FindsManyMissingValuesWhileOthersWrite) {
  MakeNumbers(10);
  const auto connection = Connect();
  const auto rows = Open("SELECT * FROM NUMBERS", connection, CursorType::Dynamic, LockType::Pessimistic);
  for (int i = 0; i < 20; ++i) {
    rows->MoveFirst();
    rows->Find("NAME='missing" + std::to_string(i) + "'");
    EXPECT_TRUE(rows->Eof());
    engine->Run("UPDATE NUMBERS SET VALUE = " + std::to_string(i) + " WHERE ID = 3");
  }
  engine->Run("INSERT INTO NUMBERS VALUES (11,'missing7',0)");
  rows->MoveFirst();
  rows->Find("NAME='missing7'");
  ASSERT_FALSE(rows->Eof());
  EXPECT_EQ(rows->Value("ID"), Variant(11));
}

TEST_P(Conformance, DoesNotFindWhatItDeletedOrChanged) {
  MakeNumbers(10);
  const auto connection = Connect();
  for (const CursorType cursor : kSearchable) {
    const auto rows = Open("SELECT * FROM NUMBERS", connection, cursor, LockType::Optimistic);
    rows->Find("NAME='n4'");
    rows->Delete(ADODB::Affect::Current);
    rows->MoveFirst();
    rows->Find("NAME='n4'");
    EXPECT_TRUE(rows->Eof());
    rows->MoveFirst();
    rows->Find("NAME='n5'");
    rows->SetValue("NAME", "five");
    rows->Update();
    rows->MoveFirst();
    rows->Find("NAME='n5'");
    EXPECT_TRUE(rows->Eof());
    rows->MoveFirst();
    rows->Find("NAME='five'");
    EXPECT_EQ(rows->Value("ID"), Variant(5));
    engine->Run("INSERT INTO NUMBERS VALUES (4,'n4',1)");
    engine->Run("UPDATE NUMBERS SET NAME = 'n5' WHERE ID = 5");
  }
}

TEST_P(Conformance, ComparesTextsAsTheDatabaseDoes) {
  engine->CreateTable("SESSIONS", {{"ID", ColumnKind::Key}, {"SESSIONID", ColumnKind::Text}});
  engine->Run("INSERT INTO SESSIONS VALUES (1,'Abc')");
  const auto connection = Connect();
  const auto rows =
      Open("SELECT SESSIONID FROM SESSIONS", connection, CursorType::Dynamic, LockType::Pessimistic);
  const auto finds = [&](const char* criterion) {
    rows->MoveFirst();
    rows->Find(criterion);
    return !rows->Eof();
  };
  EXPECT_TRUE(finds("SESSIONID='Abc'"));
  EXPECT_EQ(finds("SESSIONID='aBC'"), Quirk().textIgnoresCase);
  EXPECT_EQ(finds("SESSIONID='Abc '"), Quirk().textIgnoresTrailingBlanks);
  EXPECT_FALSE(finds("SESSIONID=' Abc'"));
  EXPECT_FALSE(finds("SESSIONID='Ab'"));
  EXPECT_FALSE(finds("SESSIONID=''"));
}

TEST_P(Conformance, NeverFindsANull) {
  MakePeople();
  const auto connection = Connect();
  const auto rows = Open("SELECT * FROM PEOPLE", connection, CursorType::Static, LockType::ReadOnly);
  rows->Find("NAME=''");
  EXPECT_TRUE(rows->Eof());
  rows->MoveFirst();
  rows->Find("VISITS=0");
  EXPECT_TRUE(rows->Eof());
}

TEST_P(Conformance, RefusesACriterionThatIsNone) {
  MakeNumbers(3);
  const auto connection = Connect();
  const auto rows = Open("SELECT * FROM NUMBERS", connection, CursorType::Dynamic, LockType::Pessimistic);
  for (const char* criterion : {"",
                                "NAME",
                                "NAME=",
                                "NAME=n1",
                                "NAME='O'Brien'",
                                "NAME='x",
                                "NAME='a' OR NAME='b'",
                                "='a'",
                                "NAME='a'b",
                                "ID=1 2",
                                "ID='x'",
                                "NAME='n''1'",
                                "NAME='''n1'''",
                                "NAME=''''",
                                "NAME='n1'--'",
                                "NAME='n1' --'",
                                "NAME='n1' ",
                                "NAME='n1'/**/",
                                "NAME='n1' --",
                                "ID=1 ",
                                "ID=1--",
                                "NAME='n1';"}) {
    EXPECT_EQ(NumberOf([&] { rows->Find(criterion); }), 3001) << criterion;
    if (*criterion != '\0') {
      EXPECT_EQ(NumberOf([&] { rows->SetFilter(criterion); }), 3001) << criterion;
    }
  }
  EXPECT_EQ(NumberOf([&] { rows->Find("NOSUCH='x'"); }), 3265);
  EXPECT_EQ(rows->Value("ID"), Variant(1)) << "a refused search leaves the set where it is";
  EXPECT_EQ(NumberOf([&] { rows->Find(std::string_view("NAME='n1\0'", 10)); }), 3001);
}

TEST_P(Conformance, FiltersByANumber) {
  MakeNumbers(2500);
  const auto connection = Connect();
  for (const CursorType cursor : kSearchable) {
    const auto rows = Open("SELECT * FROM NUMBERS", connection, cursor, LockType::Optimistic);
    rows->SetFilter("VALUE=2");
    int seen = 0;
    for (; !rows->Eof(); rows->MoveNext(), ++seen) EXPECT_EQ(rows->Value("VALUE"), Variant(2));
    EXPECT_EQ(seen, 833);
    if (cursor != CursorType::Dynamic) {
      EXPECT_EQ(rows->RecordCount(), 833);
    }
    rows->SetFilter("VALUE=7");
    EXPECT_TRUE(rows->Bof());
    EXPECT_TRUE(rows->Eof());
    rows->SetFilter("ID=17");
    EXPECT_THAT(Walk(*rows, "NAME"), ElementsAre("n17"));
    rows->SetFilter("");
    EXPECT_EQ(Walk(*rows, "ID").size(), 2500u);
  }
}

TEST_P(Conformance, ChangesRowsUnderAFilter) {
  MakeNumbers(9);
  const auto connection = Connect();
  const auto rows = Open("SELECT * FROM NUMBERS", connection, CursorType::Keyset, LockType::Optimistic);
  rows->SetFilter("VALUE=0");
  rows->Delete(ADODB::Affect::Current);
  EXPECT_EQ(rows->RecordCount(), 2);
  rows->MoveNext();
  rows->SetValue("NAME", "six");
  rows->Update();
  EXPECT_THAT(Rows("SELECT ID, NAME FROM NUMBERS WHERE VALUE = 0 ORDER BY ID"), ElementsAre("6|six", "9|n9"));
}

TEST_P(Conformance, FindsWhatWasAddedBeforeTheFirstSearch) {
  MakeNumbers(10);
  const auto connection = Connect();
  const auto rows = Open("SELECT * FROM NUMBERS", connection, CursorType::Dynamic, LockType::Pessimistic);
  EXPECT_FALSE(rows->Eof());
  engine->Run("INSERT INTO NUMBERS VALUES (11,'late',5)");
  rows->MoveFirst();
  rows->Find("NAME='late'");
  ASSERT_FALSE(rows->Eof());
  EXPECT_EQ(rows->Value("VALUE"), Variant(5));
}

TEST_P(Conformance, ADynamicSetThatDeletedARowShowsEveryLiveRowWhenItIsReadAgain) {
  MakeNumbers(6);
  const auto connection = Connect();
  const auto rows = Open("SELECT * FROM NUMBERS", connection, CursorType::Dynamic, LockType::Optimistic);
  rows->Find("NAME='n3'");
  rows->Delete(ADODB::Affect::Current);
  // In front of all others, so that the places of all rows change.
  engine->Run("INSERT INTO NUMBERS VALUES (0,'late',0)");
  rows->MoveFirst();
  rows->Find("NAME='late'");
  ASSERT_FALSE(rows->Eof());
  rows->MoveFirst();
  EXPECT_THAT(Walk(*rows, "ID"), ElementsAre("0", "1", "2", "4", "5", "6"));
}

TEST_P(Conformance, ARowThatFindMetAndThatIsAnotherOneByNowIsNotTheCurrentRow) {
  const auto connection = Connect();
  for (const CursorType cursor : {CursorType::Keyset, CursorType::Dynamic}) {
    MakeNumbers(10);
    const auto rows = Open("SELECT * FROM NUMBERS", connection, cursor, LockType::Optimistic);
    rows->Find("NAME='n4'");
    engine->Run("UPDATE NUMBERS SET NAME = 'other' WHERE ID = 4");
    LetRowsGrowOld();
    EXPECT_EQ(NumberOf([&] { rows->Delete(ADODB::Affect::Current); }), 3021);
    EXPECT_THAT(Rows("SELECT COUNT(*) FROM NUMBERS"), ElementsAre("10"));
  }
}

TEST_P(Conformance, FindUnderAFilterStartsAtTheCurrentRow) {
  MakeNumbers(12);
  const auto connection = Connect();
  for (const CursorType cursor : kSearchable) {
    const auto rows = Open("SELECT * FROM NUMBERS", connection, cursor, LockType::Optimistic);
    rows->SetFilter("VALUE=0");
    rows->MoveNext();
    rows->MoveNext();
    EXPECT_EQ(rows->Value("ID"), Variant(9));
    rows->Find("NAME='n9'");
    EXPECT_EQ(rows->Value("ID"), Variant(9));
    rows->Find("NAME='n12'");
    EXPECT_EQ(rows->Value("ID"), Variant(12));
    rows->Find("NAME='n6'");
    EXPECT_TRUE(rows->Eof()) << "it lies before the current row";
    rows->MoveFirst();
    rows->Find("NAME='n7'");
    EXPECT_TRUE(rows->Eof()) << "it does not meet the filter";
  }
}

TEST_P(Conformance, FindUnderAFilterWritesAPendingChangeFirst) {
  const auto connection = Connect();
  for (const CursorType cursor : kSearchable) {
    MakeNumbers(12);
    const auto rows = Open("SELECT * FROM NUMBERS", connection, cursor, LockType::Optimistic);
    rows->SetFilter("VALUE=0");
    rows->SetValue("NAME", "three");
    rows->Find("NAME='three'");
    EXPECT_THAT(Rows("SELECT NAME FROM NUMBERS WHERE ID = 3"), ElementsAre("three"));
    ASSERT_FALSE(rows->Eof());
    EXPECT_EQ(rows->Value("ID"), Variant(3));
  }
}

TEST_P(Conformance, ARowAddedUnderAFilterIsTheCurrentOneAndTheLast) {
  const auto connection = Connect();
  for (const CursorType cursor : kSearchable) {
    MakeNumbers(6);
    const auto rows = Open("SELECT * FROM NUMBERS", connection, cursor, LockType::Optimistic);
    rows->SetFilter("VALUE=0");
    rows->AddNew();
    rows->SetValue("ID", 99);
    rows->SetValue("NAME", "new");
    rows->SetValue("VALUE", 0);
    rows->Update();
    EXPECT_EQ(rows->Value("ID"), Variant(99));
    rows->SetValue("NAME", "newer");
    rows->Update();
    rows->MoveFirst();
    EXPECT_THAT(Walk(*rows, "NAME"), ElementsAre("n3", "n6", "newer"));
    rows->SetFilter("");
    EXPECT_EQ(Walk(*rows, "ID").size(), 7u);
  }
}

TEST_P(Conformance, ARowThatNoLongerMeetsTheFilterIsSteppedOver) {
  const auto connection = Connect();
  for (const CursorType cursor : {CursorType::Keyset, CursorType::Dynamic}) {
    MakeNumbers(12);
    const auto rows = Open("SELECT * FROM NUMBERS", connection, cursor, LockType::Optimistic);
    rows->SetFilter("VALUE=0");
    EXPECT_EQ(rows->Value("ID"), Variant(3));
    engine->Run("UPDATE NUMBERS SET VALUE = 5 WHERE ID = 6");
    LetRowsGrowOld();
    EXPECT_THAT(Walk(*rows, "ID"), ElementsAre("3", "9", "12"));
  }
}

// To make the index other rows come and go in memory before the failure.
TEST_P(Conformance, ASearchThatFailsLeavesTheCurrentRecordWhatItWas) {
  MakeNumbers(3500);
  const auto connection = Connect();
  const auto rows =
      Open("SELECT ID, NAME FROM NUMBERS", connection, CursorType::Keyset, LockType::Optimistic);
  rows->MoveNext();
  ASSERT_EQ(rows->Value("NAME"), Variant("n2"));
  for (const std::size_t statement : {1U, 2U, 3U}) {
    faults->failAfter = statement;
    EXPECT_EQ(NumberOf([&] { rows->Find("NAME='n3000'"); }), faults->error.Number()) << statement;
    EXPECT_EQ(rows->Value("NAME"), Variant("n2")) << statement;
    faults->failAfter = statement;
    EXPECT_EQ(NumberOf([&] { rows->SetFilter("NAME='n3000'"); }), faults->error.Number()) << statement;
    EXPECT_EQ(rows->Value("ID"), Variant(2)) << statement;
  }
  rows->Find("NAME='n3000'");
  EXPECT_EQ(rows->Value("ID"), Variant(3000));
}

// However long the walk pauses at each row: a window is read again, not a statement for each row that it
// holds.
TEST_P(Conformance, AWalkUnderAFilterReadsItsRowsByTheWindow) {
  MakeNumbers(3000);
  const auto connection = Connect();
  const auto rows = Open("SELECT ID, VALUE FROM NUMBERS", connection, CursorType::Keyset, LockType::ReadOnly);
  rows->SetFilter("VALUE=1");
  const auto statementsOf = [&](const std::function<void(int)>& atRow) {
    const std::size_t before = faults->statements.size();
    int count = 0;
    for (rows->MoveFirst(); !rows->Eof(); rows->MoveNext()) atRow(++count);
    EXPECT_EQ(count, 1000);
    return faults->statements.size() - before;
  };
  EXPECT_LE(statementsOf([](int) {}), 10U);
  // One pause in ten rows costs one small window each.
  EXPECT_LE(statementsOf([&](int row) {
              if (row % 10 == 0) LetRowsGrowOld();
            }),
            110U);
}

}  // namespace
}  // namespace orvane_test
