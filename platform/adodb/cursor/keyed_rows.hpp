// Rows of one table, held as a list of keys with a window of full rows.
#pragma once

#include <memory>
#include <string>

#include "platform/adodb/cursor/key_list.hpp"
#include "platform/adodb/cursor/keyed_select.hpp"
#include "platform/adodb/cursor/row_source.hpp"
#include "platform/adodb/session/freshness.hpp"
#include "platform/adodb/session/shared_session.hpp"

namespace ADODB::engine {

// How many rows are read at a time: few where a walk has just stopped to act, more and more while nothing
// happens.
class WindowSize {
 public:
  static constexpr std::size_t kMost = 1000;
  static constexpr std::size_t kFewest = 32;

  std::size_t Rows() const { return rows_; }
  void Grow() { rows_ = rows_ * 2 < kMost ? rows_ * 2 : kMost; }
  void StartSmall() { rows_ = kFewest; }

 private:
  std::size_t rows_ = kMost;
};

// The rows stand in the order of the statement, or else of the key. Of a fixed set (a keyset cursor) the keys
// are read when it is opened. An open one (a dynamic cursor) is read page by page as the walk reaches them,
// so that rows added ahead of it are met and rows that no longer meet the condition are not; where pages
// cannot be asked for (another order than the key's, a key that moves with the row) its keys are listed too.
// Rows themselves are read again from the database, a window at a time: at most 1000 rows or about 4 MiB, and
// none that is older than Freshness allows.
class KeyedRows : public RowSource {
 public:
  // `mostRows` 0 is no limit. REQUIRES: `table` has key columns that tell its rows apart.
  KeyedRows(std::shared_ptr<Link> link, const SelectShape& select, const TableShape& table, bool fixed,
            std::size_t mostRows);

  const std::vector<Column>& Columns() const override { return columns_; }
  bool Reach(std::size_t ordinal) override;
  std::size_t KnownCount() const override { return keys_.Size(); }
  const Row* At(std::size_t ordinal, std::span<const std::uint32_t> upcoming) override;
  std::size_t Append(Row row) override;
  void Replace(std::size_t ordinal, Row row) override;
  void Rewind() override;
  bool IsOpenToChanges() const override { return !fixed_; }
  std::size_t ReadAgain(std::size_t ordinal, const Visit& visit) override;

 private:
  bool IsOutdated() const;
  std::unique_ptr<Rows> Run(const KeyedSelect::Query& query) const;
  void TakeColumns(const Rows& rows);
  Row ReadRow(const Rows& rows, std::size_t count);
  KeyView KeyOf(const Row& row) const { return KeyView(row).subspan(columns_.size()); }
  void PushKey(KeyView key);
  std::string BytesAt(std::size_t ordinal) const;

  bool ReadShort();
  void ReadPage();
  void ReadKeys(const KeyedSelect::Query& query);
  void ListKeys();
  void StartPages();
  const Row* TurnTo(std::size_t ordinal);

  std::vector<std::size_t> Wanted(std::size_t ordinal, std::span<const std::uint32_t> upcoming);
  void Fetch(std::vector<std::size_t> ordinals);
  const Row* InWindow(std::size_t ordinal, bool& inside) const;
  void DropFromWindow(std::size_t ordinal);

  std::shared_ptr<Link> link_;
  KeyedSelect statements_;
  const bool fixed_;
  const bool keyMoves_;  // a row that is changed gets another key, and its own may come to another row
  const std::size_t mostRows_;

  std::vector<Column> columns_;
  bool listed_;  // the keys are a list that was read once; otherwise those of the pages so far
  KeyList keys_;
  Row lastKey_;             // of the last row read; pages go on behind it
  std::size_t sorted_ = 0;  // keys before this ordinal are in key order
  bool complete_ = false;   // all keys are known

  std::vector<std::size_t> windowOrdinals_;
  std::vector<Row> window_;  // an empty row is a hole
  std::vector<Row> spare_;   // rows of the window before, for their memory
  WindowSize windowSize_;
  Freshness::Stamp readAt_;  // the window
};

}  // namespace ADODB::engine
