// A row is changed or deleted only while it still reads as its reader was shown it.
#include "tests/adodb/conformance/conformance.hpp"

namespace orvane_test {
namespace {

using ADODB::Affect;
using ADODB::CursorType;
using ADODB::LockType;
using ADODB::engine::kRowChanged;
using automation::DateTime;
using automation::Variant;
using testing::ElementsAre;

TEST_P(Conformance, DoesNotDeleteOrChangeARowThatIsNotWhatWasRead) {
  const auto connection = Connect();
  for (const CursorType cursor : kCursorTypes) {
    for (const LockType lock : {LockType::Optimistic, LockType::Pessimistic}) {
      MakeNumbers(3);
      const auto rows = Open("SELECT * FROM NUMBERS", connection, cursor, lock);
      EXPECT_EQ(rows->Value("VALUE"), Variant(1));
      engine->Run("UPDATE NUMBERS SET VALUE = 5 WHERE ID = 1");
      EXPECT_EQ(NumberOf([&] { rows->Delete(Affect::Current); }), kRowChanged);
      rows->SetValue("NAME", "mine");
      EXPECT_EQ(NumberOf([&] { rows->Update(); }), kRowChanged);
      EXPECT_THAT(Rows("SELECT * FROM NUMBERS WHERE ID = 1"), ElementsAre("1|n1|5"));
    }
  }
}

TEST_P(Conformance, AChangeOfWhatNobodyReadIsNoConflict) {
  const auto connection = Connect();
  for (const CursorType cursor : {CursorType::ForwardOnly, CursorType::Keyset, CursorType::Static}) {
    MakeNumbers(2);
    const auto rows = Open("SELECT * FROM NUMBERS", connection, cursor, LockType::Optimistic);
    EXPECT_EQ(rows->Value("ID"), Variant(1));
    engine->Run("UPDATE NUMBERS SET NAME = 'other' WHERE ID = 1");
    rows->SetValue("VALUE", 9);
    rows->Update();
    rows->Delete(Affect::Current);
    EXPECT_THAT(Rows("SELECT ID FROM NUMBERS"), ElementsAre("2"));
  }
}

// It may be what the statement's condition was about.
TEST_P(Conformance, ADynamicCursorChangesAndDeletesOnlyARowThatIsWhollyAsItWas) {
  const auto connection = Connect();
  MakeNumbers(2);
  const auto rows =
      Open("SELECT * FROM NUMBERS WHERE NAME = 'n1'", connection, CursorType::Dynamic, LockType::Optimistic);
  EXPECT_EQ(rows->Value("ID"), Variant(1));
  engine->Run("UPDATE NUMBERS SET NAME = 'answered' WHERE ID = 1");
  EXPECT_EQ(NumberOf([&] { rows->Delete(Affect::Current); }), kRowChanged);
  rows->SetValue("VALUE", 9);
  EXPECT_EQ(NumberOf([&] { rows->Update(); }), kRowChanged);
  EXPECT_THAT(Rows("SELECT * FROM NUMBERS WHERE ID = 1"), ElementsAre("1|answered|1"));
}

TEST_P(Conformance, WritesOverAValueOnlyWhileItIsWhatItWas) {
  const auto connection = Connect();
  for (const CursorType cursor : kCursorTypes) {
    MakeNumbers(2);
    const auto rows = Open("SELECT * FROM NUMBERS", connection, cursor, LockType::Optimistic);
    EXPECT_EQ(rows->Value("ID"), Variant(1));
    engine->Run("UPDATE NUMBERS SET VALUE = 5 WHERE ID = 1");
    rows->SetValue("VALUE", 9);
    EXPECT_EQ(NumberOf([&] { rows->Update(); }), kRowChanged);
    EXPECT_THAT(Rows("SELECT * FROM NUMBERS WHERE ID = 1"), ElementsAre("1|n1|5"));
  }
}

TEST_P(Conformance, WhatIsReadBesideAChangeIsComparedAsWell) {
  const auto connection = Connect();
  MakeNumbers(2);
  const auto rows = Open("SELECT * FROM NUMBERS", connection, CursorType::Keyset, LockType::Optimistic);
  rows->SetValue("VALUE", 9);
  EXPECT_EQ(rows->Value("NAME"), Variant("n1"));
  engine->Run("UPDATE NUMBERS SET NAME = 'other' WHERE ID = 1");
  EXPECT_EQ(NumberOf([&] { rows->Update(); }), kRowChanged);
  EXPECT_THAT(Rows("SELECT * FROM NUMBERS WHERE ID = 1"), ElementsAre("1|other|1"));
}

TEST_P(Conformance, WhatWasReadOfOneRowIsNotComparedInTheNext) {
  MakeNumbers(2);
  const auto connection = Connect();
  const auto rows = Open("SELECT * FROM NUMBERS", connection, CursorType::Keyset, LockType::Optimistic);
  EXPECT_EQ(rows->Value("NAME"), Variant("n1"));
  rows->MoveNext();
  EXPECT_EQ(rows->Value("ID"), Variant(2));
  engine->Run("UPDATE NUMBERS SET NAME = 'other' WHERE ID = 2");
  rows->Delete(Affect::Current);
  EXPECT_THAT(Rows("SELECT ID FROM NUMBERS"), ElementsAre("1"));
}

TEST_P(Conformance, SendsOneTextForAllRowsOfWhichTheSameWasRead) {
  MakeNumbers(6);
  engine->Run("UPDATE NUMBERS SET VALUE = NULL WHERE ID = 2");
  const auto connection = Connect();
  const auto rows = Open("SELECT * FROM NUMBERS", connection, CursorType::Keyset, LockType::Optimistic);
  const auto sentFor = [&](auto&& action) {
    action();
    const std::string sent = faults->statements.back();
    rows->MoveNext();
    rows->Value("NAME");
    rows->Value("VALUE");
    return sent;
  };
  const auto erase = [&] { rows->Delete(Affect::Current); };
  const auto change = [&] {
    rows->SetValue("NAME", "x");
    rows->Update();
  };
  sentFor(erase);
  const std::string deleted = sentFor(erase);
  EXPECT_EQ(sentFor(erase), deleted);
  const std::string updated = sentFor(change);
  EXPECT_EQ(sentFor(change), updated);
}

struct ColumnCase {
  ColumnKind kind;
  std::vector<std::string> values;  // literals that read differently, one after the other
};

TEST_P(Conformance, NoticesTheSmallestChangeOfAColumnOfAnyType) {
  const auto bytes = [&](const std::string& hex) {
    return GetParam().name == "PostgreSQL" ? "decode('" + hex + "','hex')" : "X'" + hex + "'";
  };
  const std::string large(100000, 'x');
  const ColumnCase cases[] = {
      {ColumnKind::Integer, {"NULL", "0", "1", "-1", "2147483647", "NULL"}},
      {ColumnKind::BigInteger, {"9007199254740993", "9007199254740992", "NULL", "5"}},
      {ColumnKind::Boolean,
       {engine->BooleanLiteral(true), engine->BooleanLiteral(false), "NULL", engine->BooleanLiteral(false)}},
      {ColumnKind::DateTime,
       {"'2004-07-26 09:05:03'", "'2004-07-26 09:05:03.001'", "'2004-07-26 09:05:03.999'", "NULL",
        "'1899-12-30 00:00:00'"}},
      {ColumnKind::Double, {"0.1", "0.10000000000000002", "1e300", "0.30000000000000004", "NULL", "0", "7"}},
      {ColumnKind::Single, {"0.1", "0.2", "16777216", "NULL", "3", "1e-30"}},
      {ColumnKind::Decimal, {"0.1", "0.1000000001", "NULL", "5", "1234567.0000000001", "-0.5"}},
      {ColumnKind::Text, {"'a'", "'A'", "'a '", "''", "NULL", "' a'", "'\xC3\xA4'", "'\xE2\x82\xAC''%?\\'"}},
      {ColumnKind::FixedText, {"'a'", "'A'", "NULL", "'b'"}},
      {ColumnKind::LongText, {"'" + large + "'", "'" + large + "X'", "NULL", "'" + large + "x '"}},
      {ColumnKind::Bytes, {bytes("00FF80"), bytes("00FF81"), "NULL", bytes("41")}},
  };
  const auto connection = Connect();
  for (const ColumnCase& column : cases) {
    // A table for each: a server may have statements prepared for one of the name, with the types it had.
    const std::string table = "ONE" + std::to_string(static_cast<int>(column.kind));
    engine->CreateTable(table, {{"ID", ColumnKind::Key}, {"V", column.kind}, {"N", ColumnKind::Integer}});
    const ADODB::SqlFragment all("SELECT * FROM " + table);
    for (std::size_t i = 0; i < column.values.size(); ++i) {
      const std::string& value = column.values[i];
      SCOPED_TRACE(testing::Message()
                   << "kind " << static_cast<int>(column.kind) << ", value " << value.substr(0, 40));
      engine->Run("DELETE FROM " + table);
      engine->Run("INSERT INTO " + table + " VALUES (1," + value + ",0)");
      for (const CursorType cursor : kCursorTypes) {
        const auto rows = Open(all, connection, cursor, LockType::Optimistic);
        rows->Value("V");
        rows->SetValue("N", static_cast<int>(cursor));
        EXPECT_NO_THROW(rows->Update()) << "unchanged";
      }
      const auto rows = Open(all, connection, CursorType::Keyset, LockType::Optimistic);
      rows->Value("V");
      if (i + 1 < column.values.size()) {
        engine->Run("UPDATE " + table + " SET V = " + column.values[i + 1]);
        EXPECT_EQ(NumberOf([&] { rows->Delete(Affect::Current); }), kRowChanged)
            << "now " << column.values[i + 1].substr(0, 40);
      } else {
        rows->Delete(Affect::Current);
      }
    }
  }
}

TEST_P(Conformance, WhatTheSetItselfWroteIsNotComparedInAnotherForm) {
  const DateTime seen = DateTime::FromUnixMicroseconds(
      DateTime::FromParts({.year = 2004, .month = 2, .day = 29, .hour = 23}).UnixMicroseconds() + 123456);
  const auto connection = Connect();
  for (const CursorType cursor : kCursorTypes) {
    MakePeople();
    const auto rows = Open("SELECT * FROM PEOPLE", connection, cursor, LockType::Optimistic);
    for (const char* name : {"first", "second"}) {
      rows->SetValue("SEEN", seen);
      rows->SetValue("NAME", name);
      rows->Update();
      rows->Value("SEEN");
      rows->Value("NAME");
    }
    rows->AddNew();
    rows->SetValue("SEEN", seen);
    rows->Update();
    rows->Value("SEEN");
    rows->SetValue("NAME", "added");
    rows->Update();
    rows->MoveFirst();
    rows->Value("SEEN");
    rows->Delete(Affect::Current);
    EXPECT_THAT(Rows("SELECT NAME FROM PEOPLE"), ElementsAre("added"));
  }
}

}  // namespace
}  // namespace orvane_test
