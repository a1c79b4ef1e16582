// Whoever watches the changes of a class table's connections hears of each before it is permanent, by the
// same keys and rows on every engine.
#include <optional>

#include "platform/adodb/changes.hpp"
#include "platform/adodb/registration.hpp"
#include "tests/adodb/conformance/conformance.hpp"
#include "tests/support/error_number.hpp"

namespace orvane_test {
namespace {

using ADODB::Affect;
using ADODB::CursorType;
using ADODB::Deleted;
using ADODB::LockType;
using ADODB::NamedRow;
using ADODB::engine::kRowChanged;
using automation::Variant;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

std::string Text(const NamedRow& row) {
  std::string text;
  for (const ADODB::NamedValue& value : row) {
    text += (text.empty() ? "" : ",") + value.column + "=" +
            (value.value.IsNull() ? "NULL" : automation::ToText(value.value));
  }
  return "(" + text + ")";
}

// Keeps what it is told; raises where it is asked to.
class Heard final : public ADODB::ChangeObserver {
 public:
  bool WantsRows() const override { return rows; }
  Ticket RowChanges(ADODB::Change change, std::string_view table, NamedRow key,
                    std::optional<NamedRow> before) override {
    return Add(Name(change) + " " + std::string(table) + " " + Text(key) +
               (before ? " was " + Text(*before) : ""));
  }
  Ticket RowsChange(ADODB::Change change, std::string_view table, std::vector<NamedRow> keys,
                    std::vector<NamedRow> before) override {
    std::string text = Name(change) + "s " + std::string(table);
    if (keys.size() > 20) text += " " + std::to_string(keys.size()) + " from";
    for (std::size_t i = 0; i < keys.size() && (keys.size() <= 20 || i == 0); ++i)
      text += " " + Text(keys[i]);
    for (const NamedRow& row : before) text += " was " + Text(row);
    return Add(text);
  }
  Ticket RowsCounted(ADODB::Change change, std::string_view table, std::size_t count) override {
    return Add(Name(change) + "s " + std::string(table) + " " + std::to_string(count) + " rows");
  }
  Ticket Begin() override { return Add("begin"); }
  Ticket Commit() override { return Add("commit"); }
  Ticket Rollback() override { return Add("rollback"); }
  void Failed(const Ticket& told, const automation::Error& error) noexcept override {
    all.push_back("failed: " + *std::static_pointer_cast<const std::string>(told) + ": " +
                  std::to_string(error.Number()));
  }

  bool rows = false;
  std::optional<std::string> refuses;  // what begins like this
  std::vector<std::string> all;
  std::function<void()> hearing;  // called with each

 private:
  static std::string Name(ADODB::Change change) {
    return change == ADODB::Change::Insert ? "insert" : change == ADODB::Change::Update ? "update" : "delete";
  }
  Ticket Add(std::string text) {
    if (refuses && text.starts_with(*refuses)) throw automation::Error(automation::ErrorNumber::DiskFull);
    all.push_back(text);
    if (hearing) hearing();
    return std::make_shared<const std::string>(std::move(text));
  }
};

// Connections whose changes are heard.
class Watched {
 public:
  ADODB::ConnectionPtr Connect(EngineUnderTest& engine, bool rows = false) {
    heard.rows = rows;
    if (!classes_.Contains("ADODB.Connection")) {
      ADODB::RegisterClasses(classes_, {engine.Provider()}, {}, &heard);
    }
    auto connection = automation::As<ADODB::Connection>(classes_.Create("ADODB.Connection"));
    connection->Open(engine.ConnectionString(), "", "", -1);
    return connection;
  }

  Heard heard;

 private:
  automation::ClassTable classes_;
};

TEST_P(Conformance, WhatComesBeforeAChangeIsDoneFirstAndItsFailureKeepsTheRows) {
  MakeNumbers(4);
  automation::ClassTable classes;
  int calls = 0;
  bool fails = false;
  ADODB::RegisterClasses(classes, {engine->Provider()}, {}, nullptr, [&] {
    ++calls;
    if (fails) throw automation::Error(automation::ErrorNumber::DiskFull);
  });
  const auto connection = automation::As<ADODB::Connection>(classes.Create("ADODB.Connection"));
  connection->Open(engine->ConnectionString(), "", "", -1);
  const auto rows =
      Open("SELECT ID, VALUE FROM NUMBERS", connection, CursorType::Dynamic, LockType::Optimistic);
  EXPECT_EQ(calls, 0);
  rows->SetValue("VALUE", 7);
  rows->Update();
  EXPECT_EQ(calls, 1);
  rows->Delete(Affect::Current);
  EXPECT_EQ(calls, 2);
  connection->Execute("DELETE FROM NUMBERS WHERE ID=2", nullptr, ADODB::kExecuteNoRecords);
  EXPECT_EQ(calls, 3);

  const auto expectKept = [&](auto&& change) {
    fails = true;
    EXPECT_EQ(ErrorNumberOf(change), static_cast<int>(automation::ErrorNumber::DiskFull));
    fails = false;
    EXPECT_THAT(Rows("SELECT ID FROM NUMBERS ORDER BY ID"), ElementsAre("3", "4"));
  };
  expectKept([&] { connection->Execute("DELETE FROM NUMBERS", nullptr, ADODB::kExecuteNoRecords); });
  expectKept([&] { connection->ExecuteDelete("DELETE FROM NUMBERS WHERE ID>0", Deleted::Keys); });
  connection->BeginTrans();
  connection->Execute("DELETE FROM NUMBERS WHERE ID=3", nullptr, ADODB::kExecuteNoRecords);
  fails = true;
  EXPECT_EQ(ErrorNumberOf([&] { connection->CommitTrans(); }),
            static_cast<int>(automation::ErrorNumber::DiskFull));
  connection->RollbackTrans();
  fails = false;
  EXPECT_THAT(Rows("SELECT ID FROM NUMBERS ORDER BY ID"), ElementsAre("3", "4"));
}

TEST_P(Conformance, ARowsDeletionIsToldByItsKeyBeforeItIsMade) {
  Watched watched;
  MakeNumbers(3);
  const auto connection = watched.Connect(*engine);
  const auto rows =
      Open("SELECT NAME, ID FROM NUMBERS", connection, CursorType::Dynamic, LockType::Optimistic);
  rows->MoveNext();
  std::vector<std::string> there;
  watched.heard.hearing = [&] { there = Rows("SELECT ID FROM NUMBERS ORDER BY ID"); };
  rows->Delete(Affect::Current);
  EXPECT_THAT(watched.heard.all, ElementsAre("delete NUMBERS (ID=2)"));
  EXPECT_THAT(there, ElementsAre("1", "2", "3"));
  EXPECT_THAT(Rows("SELECT ID FROM NUMBERS ORDER BY ID"), ElementsAre("1", "3"));
}

TEST_P(Conformance, WholeRowsAreToldAsTheyWere) {
  Watched watched;
  MakeNumbers(2);
  const auto connection = watched.Connect(*engine, true);
  const auto rows =
      Open("SELECT ID, VALUE FROM NUMBERS", connection, CursorType::Dynamic, LockType::Optimistic);
  rows->SetValue("VALUE", 7);
  rows->Update();
  rows->MoveNext();
  rows->Delete(Affect::Current);
  EXPECT_THAT(watched.heard.all, ElementsAre("update NUMBERS (ID=1) was (ID=1,NAME=n1,VALUE=1)",
                                             "delete NUMBERS (ID=2) was (ID=2,NAME=n2,VALUE=2)"));
  EXPECT_THAT(Rows("SELECT ID, NAME, VALUE FROM NUMBERS"), ElementsAre("1|n1|7"));
}

TEST_P(Conformance, AnInsertLeavesOutWhatTheDatabaseNumbersItself) {
  Watched watched;
  MakePeople();
  engine->CreateTable("PAIRS",
                      {{"A", ColumnKind::Integer}, {"B", ColumnKind::Integer}, {"V", ColumnKind::Text}},
                      "PRIMARY KEY (B, A)");
  const auto connection = watched.Connect(*engine);
  const auto people = Open("SELECT * FROM PEOPLE", connection, CursorType::Keyset, LockType::Optimistic);
  people->AddNew();
  people->SetValue("NAME", "Ada");
  people->Update();
  const auto pairs = Open("SELECT V, A, B FROM PAIRS", connection, CursorType::Keyset, LockType::Optimistic);
  pairs->AddNew();
  pairs->SetValue("A", 1);
  pairs->SetValue("B", 2);
  pairs->Update();
  EXPECT_THAT(watched.heard.all, ElementsAre("insert PEOPLE ()", "insert PAIRS (B=2,A=1)"));
  EXPECT_THAT(Rows("SELECT NAME FROM PEOPLE WHERE ID = 2"), ElementsAre("Ada"));
}

TEST_P(Conformance, ACompositeKeyIsToldAsTheTableDeclaresIt) {
  Watched watched;
  engine->CreateTable("PAIRS",
                      {{"A", ColumnKind::Integer}, {"B", ColumnKind::Integer}, {"V", ColumnKind::Text}},
                      "PRIMARY KEY (B, A)");
  for (const char* row : {"(1,2,'p')", "(2,1,'q')", "(1,1,'r')"}) {
    engine->Run(std::string("INSERT INTO PAIRS VALUES ") + row);
  }
  const auto connection = watched.Connect(*engine);
  connection->Execute("DELETE FROM PAIRS WHERE V <> 'q'", nullptr, ADODB::kExecuteNoRecords);
  // Not among the columns of the set.
  const auto rows = Open("SELECT V FROM PAIRS", connection, CursorType::Keyset, LockType::Optimistic);
  rows->Delete(Affect::Current);
  EXPECT_THAT(watched.heard.all, ElementsAre("deletes PAIRS (B=1,A=1) (B=2,A=1)", "delete PAIRS (B=1,A=2)"));
  EXPECT_THAT(Rows("SELECT V FROM PAIRS"), IsEmpty());
}

TEST_P(Conformance, ARowOfATableWithoutAKeyIsToldByAllItsColumns) {
  Watched watched;
  engine->CreateTable("LOOSE", {{"A", ColumnKind::Integer}, {"B", ColumnKind::Text}});
  for (const char* row : {"(1,'x')", "(1,'x')", "(2,NULL)"}) {
    engine->Run(std::string("INSERT INTO LOOSE VALUES ") + row);
  }
  const auto connection = watched.Connect(*engine);
  const auto rows =
      Open("SELECT * FROM LOOSE WHERE A = 1", connection, CursorType::Keyset, LockType::Optimistic);
  rows->Delete(Affect::Current);
  connection->Execute("DELETE FROM LOOSE", nullptr, ADODB::kExecuteNoRecords);
  EXPECT_THAT(watched.heard.all,
              ElementsAre("delete LOOSE (A=1,B=x)", "deletes LOOSE (A=1,B=x) (A=2,B=NULL)"));
  EXPECT_THAT(Rows("SELECT A FROM LOOSE"), IsEmpty());
}

TEST_P(Conformance, ADeletionByAConditionIsToldBeforeItIsPermanent) {
  Watched watched;
  MakeNumbers(6);
  const auto connection = watched.Connect(*engine);
  std::vector<std::string> there;
  // Whoever asks the database has to wait for the deletion, where readers wait.
  if (!Quirk().locksWholeDatabase) {
    watched.heard.hearing = [&] { there = Rows("SELECT COUNT(*) FROM NUMBERS"); };
  }
  std::int64_t affected = 0;
  connection->Execute("DELETE FROM NUMBERS WHERE VALUE = 1", &affected, ADODB::kExecuteNoRecords);
  EXPECT_EQ(affected, 2);
  EXPECT_THAT(watched.heard.all, ElementsAre("deletes NUMBERS (ID=1) (ID=4)"));
  if (!Quirk().locksWholeDatabase) {
    EXPECT_THAT(there, ElementsAre("6"));
  }
  connection->Execute("DELETE FROM NUMBERS WHERE VALUE = 1", &affected, ADODB::kExecuteNoRecords);
  EXPECT_EQ(affected, 0);
  EXPECT_THAT(watched.heard.all, SizeIs(1)) << "nothing is nothing";
}

TEST_P(Conformance, ManyRowsOfOneDeletionAreToldInPortions) {
  Watched watched;
  MakeNumbers(2500);
  const auto connection = watched.Connect(*engine);
  connection->Execute("DELETE FROM NUMBERS WHERE ID > 1", nullptr, ADODB::kExecuteNoRecords);
  EXPECT_THAT(watched.heard.all,
              ElementsAre("deletes NUMBERS 1000 from (ID=2)", "deletes NUMBERS 1000 from (ID=1002)",
                          "deletes NUMBERS 499 from (ID=2002)"));
}

TEST_P(Conformance, ADeletionThatTellsItsRowsTellsThemAsWithoutAnObserver) {
  Watched watched;
  engine->CreateTable("PAIRS",
                      {{"A", ColumnKind::Integer}, {"B", ColumnKind::Integer}, {"V", ColumnKind::Text}},
                      "PRIMARY KEY (B, A)");
  const auto deletion = [&](const ADODB::ConnectionPtr& connection, Deleted wanted) {
    engine->Run("DELETE FROM PAIRS");
    for (const char* row : {"(1,2,'p')", "(2,1,'q')", "(1,1,'r')"}) {
      engine->Run(std::string("INSERT INTO PAIRS VALUES ") + row);
    }
    const auto gone = connection->ExecuteDelete("DELETE FROM PAIRS", wanted);
    std::vector<std::string> names;
    for (std::size_t i = 0; i < gone->Fields().Count(); ++i) names.push_back(gone->Fields().Item(i).Name());
    for (; !gone->Eof(); gone->MoveNext()) {
      for (std::size_t i = 0; i < gone->Fields().Count(); ++i)
        names.push_back(automation::ToText(gone->Value(i)));
    }
    return names;
  };
  for (const Deleted wanted : {Deleted::Keys, Deleted::Rows}) {
    const std::vector<std::string> usual = deletion(Connect(), wanted);
    for (const bool rows : {false, true}) {
      watched.heard.all.clear();
      EXPECT_EQ(deletion(watched.Connect(*engine, rows), wanted), usual);
      EXPECT_THAT(watched.heard.all,
                  ElementsAre(std::string("deletes PAIRS (B=1,A=1) (B=1,A=2) (B=2,A=1)") +
                              (rows ? " was (A=1,B=1,V=r) was (A=2,B=1,V=q) was (A=1,B=2,V=p)" : "")));
    }
  }
}

TEST_P(Conformance, WhatIsRefusedByTheObserverDoesNotHappen) {
  Watched watched;
  MakeNumbers(3);
  const auto connection = watched.Connect(*engine);
  const auto rows = Open("SELECT * FROM NUMBERS", connection, CursorType::Dynamic, LockType::Optimistic);
  watched.heard.refuses = "delete";
  EXPECT_EQ(NumberOf([&] { rows->Delete(Affect::Current); }), 61);
  EXPECT_EQ(NumberOf([&] { connection->Execute("DELETE FROM NUMBERS", nullptr, ADODB::kExecuteNoRecords); }),
            61);
  EXPECT_THAT(Rows("SELECT COUNT(*) FROM NUMBERS"), ElementsAre("3"));
  watched.heard.refuses = "commit";
  connection->BeginTrans();
  connection->Execute("DELETE FROM NUMBERS", nullptr, ADODB::kExecuteNoRecords);
  EXPECT_EQ(NumberOf([&] { connection->CommitTrans(); }), 61);
  connection->RollbackTrans();
  EXPECT_THAT(Rows("SELECT COUNT(*) FROM NUMBERS"), ElementsAre("3"));
}

TEST_P(Conformance, AChangeThatFailsIsToldAsFailed) {
  Watched watched;
  MakeNumbers(1);
  const auto connection = watched.Connect(*engine);
  const auto rows = Open("SELECT * FROM NUMBERS", connection, CursorType::Dynamic, LockType::Optimistic);
  EXPECT_EQ(rows->Value("NAME"), Variant("n1"));
  engine->Run("UPDATE NUMBERS SET NAME = 'other'");
  EXPECT_EQ(NumberOf([&] { rows->Delete(Affect::Current); }), kRowChanged);
  EXPECT_THAT(watched.heard.all, ElementsAre("delete NUMBERS (ID=1)", "failed: delete NUMBERS (ID=1): " +
                                                                          std::to_string(kRowChanged)));
}

TEST_P(Conformance, TransactionsOfTheCallerAreTold) {
  Watched watched;
  MakeNumbers(3);
  const auto connection = watched.Connect(*engine);
  connection->BeginTrans();
  connection->Execute("DELETE FROM NUMBERS WHERE ID = 1", nullptr, ADODB::kExecuteNoRecords);
  connection->CommitTrans();
  connection->BeginTrans();
  connection->Execute("DELETE FROM NUMBERS WHERE ID = 2", nullptr, ADODB::kExecuteNoRecords);
  connection->RollbackTrans();
  connection->BeginTrans();
  connection->Execute("DELETE FROM NUMBERS WHERE ID = 3", nullptr, ADODB::kExecuteNoRecords);
  connection->Close();
  EXPECT_THAT(watched.heard.all, ElementsAre("begin", "deletes NUMBERS (ID=1)", "commit",  //
                                             "begin", "deletes NUMBERS (ID=2)", "rollback", "begin",
                                             "deletes NUMBERS (ID=3)", "rollback"));
  EXPECT_THAT(Rows("SELECT ID FROM NUMBERS ORDER BY ID"), ElementsAre("2", "3"));
}

TEST_P(Conformance, OtherStatementsThatChangeRowsAreToldByTheirNumberBeforeItIsPermanent) {
  Watched watched;
  MakeNumbers(3);
  const auto connection = watched.Connect(*engine);
  std::vector<std::string> there;
  if (!Quirk().locksWholeDatabase) {
    watched.heard.hearing = [&] { there = Rows("SELECT COUNT(*) FROM NUMBERS WHERE VALUE = 9"); };
  }
  std::int64_t affected = 0;
  connection->Execute("UPDATE NUMBERS SET VALUE = 9 WHERE ID > 1", &affected, ADODB::kExecuteNoRecords);
  EXPECT_EQ(affected, 2);
  if (!Quirk().locksWholeDatabase) {
    EXPECT_THAT(there, ElementsAre("0"));
  }
  connection->Execute("INSERT INTO NUMBERS VALUES (4,'n4',1)", nullptr, ADODB::kOptionsUnspecified);
  connection->Execute("INSERT INTO NUMBERS SELECT ID + 10,'n',1 FROM NUMBERS WHERE ID < 3", nullptr,
                      ADODB::kExecuteNoRecords);
  connection->Execute("UPDATE NUMBERS SET VALUE = 8 WHERE ID = 99", &affected, ADODB::kExecuteNoRecords);
  EXPECT_EQ(affected, 0);
  EXPECT_THAT(watched.heard.all,
              ElementsAre("updates NUMBERS 2 rows", "inserts NUMBERS 1 rows", "inserts NUMBERS 2 rows"))
      << "nothing is nothing";
  EXPECT_THAT(Rows("SELECT ID FROM NUMBERS WHERE VALUE = 9 ORDER BY ID"), ElementsAre("2", "3"));
  EXPECT_THAT(Rows("SELECT COUNT(*) FROM NUMBERS"), ElementsAre("6"));
}

TEST_P(Conformance, WhatIsToldByItsNumberDoesNotHappenWhereTheObserverRefusesIt) {
  Watched watched;
  MakeNumbers(3);
  const auto connection = watched.Connect(*engine);
  watched.heard.refuses = "updates";
  EXPECT_EQ(NumberOf([&] {
              connection->Execute("UPDATE NUMBERS SET VALUE = 9", nullptr, ADODB::kExecuteNoRecords);
            }),
            61);
  EXPECT_THAT(Rows("SELECT COUNT(*) FROM NUMBERS WHERE VALUE = 9"), ElementsAre("0"));
}

TEST_P(Conformance, QueriesOfEveryFormAreNoChanges) {
  Watched watched;
  MakeNumbers(3);
  const auto connection = watched.Connect(*engine);
  const auto rows =
      connection->Execute("WITH small AS (SELECT ID FROM NUMBERS WHERE ID < 3) SELECT * FROM small", nullptr,
                          ADODB::kOptionsUnspecified);
  ASSERT_FALSE(rows->Eof());
  EXPECT_THAT(watched.heard.all, IsEmpty());
}

TEST_P(Conformance, AStatementWhoseChangesCannotBeToldIsRefused) {
  Watched watched;
  MakeNumbers(3);
  const auto connection = watched.Connect(*engine);
  for (const char* sql : {"DROP TABLE NUMBERS", "CREATE TABLE OTHERS(ID INTEGER)"}) {
    for (const int options : {ADODB::kExecuteNoRecords, ADODB::kOptionsUnspecified}) {
      EXPECT_EQ(NumberOf([&] { connection->Execute(ADODB::SqlFragment(sql), nullptr, options); }), 3251)
          << sql;
    }
  }
  EXPECT_THAT(watched.heard.all, IsEmpty());
  EXPECT_THAT(Rows("SELECT COUNT(*) FROM NUMBERS"), ElementsAre("3"));
}

}  // namespace
}  // namespace orvane_test
