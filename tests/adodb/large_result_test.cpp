// Results that are larger than what is held in memory.
#include <gtest/gtest.h>

#include "platform/adodb/cursor/key_list.hpp"
#include "platform/adodb/cursor/row_codec.hpp"
#include "platform/adodb/cursor/static_rows.hpp"
#include "platform/adodb/recordset.hpp"
#include "tests/support/sqlite_database.hpp"

namespace {

using ADODB::CursorType;
using ADODB::LockType;
using ADODB::engine::Row;
using automation::Variant;

// Rows made up as they are read: a number, and a text of 100 characters.
class MadeUpRows : public ADODB::engine::Rows {
 public:
  explicit MadeUpRows(int count) : count_(count), columns_(2) {}
  const std::vector<ADODB::engine::Column>& Columns() const override { return columns_; }
  bool Next() override { return ++at_ <= count_; }
  void ReadInto(std::size_t column, Variant& into) const override {
    into = column == 0 ? Variant(at_) : Variant(TextOf(at_));
  }
  static std::string TextOf(int number) { return std::string(100, static_cast<char>('a' + number % 26)); }

 private:
  int count_;
  int at_ = 0;
  std::vector<ADODB::engine::Column> columns_;
};

TEST(LargeResultTest, AStaticCopySpillsAndReadsBackInAnyOrder) {
  constexpr int kRows = 400000;  // some 50 MB
  MadeUpRows source(kRows);
  ADODB::engine::StaticRows rows(source, 0, 0);
  ASSERT_EQ(rows.KnownCount(), static_cast<std::size_t>(kRows));
  const auto check = [&](int number) {
    const Row* row = rows.At(static_cast<std::size_t>(number - 1), {});
    ASSERT_NE(row, nullptr);
    ASSERT_EQ((*row)[0], Variant(number));
    ASSERT_EQ((*row)[1], Variant(MadeUpRows::TextOf(number)));
  };
  for (int number = 1; number <= kRows; number += 7) check(number);
  for (int number = kRows; number > 0; number -= 99991) check(number);
  rows.Replace(300000, {Variant(1), Variant("changed")});
  EXPECT_EQ((*rows.At(300000, {}))[1], Variant("changed"));
  EXPECT_EQ(rows.Append({Variant(2), Variant("added")}), static_cast<std::size_t>(kRows));
  EXPECT_EQ((*rows.At(kRows, {}))[1], Variant("added"));
  check(300000);
}

TEST(LargeResultTest, AWindowOfLongTextsIsCutByItsSize) {
  orvane_test::TestRuntime runtime;
  orvane_test::SuiteDatabases databases(runtime);
  databases.orvane.Run(
      "CREATE TABLE T(A INTEGER PRIMARY KEY, B TEXT);"
      "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 60)"
      "INSERT INTO T SELECT i, printf('%.*c', 300000, 'x') || i FROM n");
  const auto connection = automation::CreateObject<ADODB::Connection>("ADODB.Connection");
  connection->Open(databases.orvane.ConnectionString(), "", "", -1);
  for (const CursorType cursor : {CursorType::Keyset, CursorType::Dynamic}) {
    const auto rows = automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
    const std::size_t before = databases.faults->statements.size();
    rows->Open("SELECT * FROM T WHERE A > 0", connection, cursor, LockType::Optimistic, -1);
    int seen = 0;
    for (; !rows->Eof(); rows->MoveNext()) {
      ASSERT_EQ(rows->Value("A"), Variant(++seen));
      ASSERT_EQ(automation::ToText(rows->Value("B")).substr(300000), std::to_string(seen));
    }
    EXPECT_EQ(seen, 60);
    EXPECT_GE(databases.faults->statements.size() - before, 4u) << "18 MB do not fit into one window";
  }
}

TEST(KeyListTest, KeepsKeysOfEveryKind) {
  ADODB::engine::KeyList keys;
  for (int i = 0; i < 10; ++i) keys.Push(Row{Variant(i)});
  EXPECT_TRUE(keys.IsNumeric());
  EXPECT_EQ(keys.Get(7), Row{Variant(7)});
  keys.Push(Row{Variant(std::int64_t{9000000000})});
  EXPECT_EQ(keys.Get(10), Row{Variant(std::int64_t{9000000000})});
  keys.Push(Row{Variant("text")});
  EXPECT_FALSE(keys.IsNumeric());
  EXPECT_EQ(keys.Get(3), Row{Variant(3)});
  EXPECT_EQ(keys.Get(11), Row{Variant("text")});
  keys.Set(3, Row{Variant("other")});
  EXPECT_EQ(keys.Get(3), Row{Variant("other")});
  EXPECT_EQ(keys.Size(), 12u);
}

TEST(RowCodecTest, GivesEveryValueBack) {
  const Row row = {Variant(),
                   Variant::Null(),
                   true,
                   false,
                   std::int16_t{-3},
                   7,
                   std::int64_t{1} << 40,
                   2.5,
                   automation::DateTime::FromDate(2004, 7, 26),
                   "",
                   std::string(1000, 'x')};
  std::string bytes;
  for (const Variant& value : row) ADODB::engine::Encode(value, bytes);
  const char* at = bytes.data();
  Variant decoded;
  for (const Variant& value : row) {
    ADODB::engine::Decode(at, decoded);
    EXPECT_EQ(decoded, value);
  }
  EXPECT_EQ(at, bytes.data() + bytes.size());
}

}  // namespace
