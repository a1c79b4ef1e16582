// A copy of a whole result, made when it is opened.
#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "platform/adodb/cursor/row_source.hpp"
#include "platform/adodb/cursor/spilled_rows.hpp"
#include "platform/adodb/session/provider.hpp"

namespace ADODB::engine {

// Small results stay as they are in memory.
class StaticRows : public RowSource {
 public:
  // Reads `rows` to the end, or up to `mostRows` (0: no limit). The last `keyCount` columns are the key and
  // not shown.
  StaticRows(Rows& rows, std::size_t keyCount, std::size_t mostRows);
  // The same columns without any row yet.
  StaticRows(const Rows& rows, std::size_t keyCount);
  // These columns, without any row yet.
  explicit StaticRows(std::vector<Column> columns)
      : columns_(std::make_shared<const std::vector<Column>>(std::move(columns))) {}

  const std::vector<Column>& Columns() const override { return *columns_; }
  // The columns of the key, behind those of the result.
  const std::vector<Column>& KeyColumns() const { return keyColumns_; }
  bool Reach(std::size_t ordinal) override { return ordinal < KnownCount(); }
  std::size_t KnownCount() const override { return small_.size() + (more_ ? more_->Count() : 0); }
  const Row* At(std::size_t ordinal, std::span<const std::uint32_t> upcoming) override;
  // What is left of the row is for the caller to use again.
  void Push(Row& row);
  std::size_t Append(Row row) override;
  void Replace(std::size_t ordinal, Row row) override;

 private:
  std::shared_ptr<const std::vector<Column>> columns_;
  std::vector<Column> keyColumns_;
  std::vector<Row> small_;  // the first rows, as they are
  std::size_t smallBytes_ = 0;
  std::unique_ptr<SpilledRows> more_;  // the further rows
};

}  // namespace ADODB::engine
