// Rows of one table, held as a list of keys with a window of full rows.
#pragma once

#include <memory>

#include "platform/adodb/cursor/keyed_select.hpp"
#include "platform/adodb/cursor/known_keys.hpp"
#include "platform/adodb/cursor/row_source.hpp"
#include "platform/adodb/cursor/row_window.hpp"
#include "platform/adodb/session/shared_session.hpp"

namespace ADODB::engine {

// The rows stand in the order of the statement, or else of the key. A keyset cursor's keys are read when it
// is opened. A dynamic one's rows are read page by page as the walk reaches them, so that rows added ahead of
// it are met and rows that no longer meet the condition are not; where pages cannot be asked for (another
// order than the key's, a key that moves with the row) its keys are listed too. Rows themselves are read
// again from the database, a window at a time, and none is shown that is older than Freshness allows.
class KeyedRows : public RowSource {
 public:
  // `mostRows` 0 is no limit. REQUIRES: `table` has key columns that tell its rows apart.
  KeyedRows(std::shared_ptr<SharedSession> session, const SelectShape& select, const TableShape& table,
            bool isDynamic, std::size_t mostRows);

  const std::vector<Column>& Columns() const override { return columns_; }
  bool Reach(std::size_t ordinal) override;
  std::size_t KnownCount() const override { return keys_.Size(); }
  const Row* At(std::size_t ordinal, std::span<const std::uint32_t> upcoming) override;
  bool RereadsRows() const override { return true; }
  std::size_t Append(Row row) override;
  void Replace(std::size_t ordinal, Row row) override;
  void Rewind() override;
  bool IsDynamic() const override { return isDynamic_; }
  std::size_t Requery(std::size_t ordinal, const Visit& visit) override;
  bool Holds(std::size_t column, const automation::Variant& value) const override;

 private:
  bool IsOutdated() const;
  void GrowWindow();
  std::unique_ptr<Rows> Run(const KeyedSelect::Query& query) const;
  void TakeColumns(const Rows& rows);
  KeyView KeyOf(const Row& row) const { return KeyView(row).subspan(columns_.size()); }
  bool MayKnowMore() const { return mostRows_ == 0 || keys_.Size() < mostRows_; }

  bool ReadShort();
  void ReadPage();
  void ReadKeys(const KeyedSelect::Query& query);
  void ListKeys();
  void ForgetFrom(std::size_t ordinal);
  std::vector<std::size_t> Wanted(std::size_t ordinal, std::span<const std::uint32_t> upcoming) const;
  void Fetch(std::vector<std::size_t> ordinals);

  std::shared_ptr<SharedSession> session_;
  KeyedSelect statements_;
  const bool isDynamic_;
  const bool keyMoves_;  // a row that is changed gets another key, and its own may come to another row
  const std::size_t mostRows_;

  std::vector<Column> columns_;
  KnownKeys keys_;
  bool listed_;            // the keys are a list that was read once; otherwise those of the pages so far
  bool complete_ = false;  // all keys are known
  RowWindow window_;
};

}  // namespace ADODB::engine
