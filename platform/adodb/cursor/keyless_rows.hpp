// Rows of a table without a key, on an engine that has no other address for them.
#pragma once

#include <memory>
#include <string>

#include "platform/adodb/cursor/row_source.hpp"
#include "platform/adodb/cursor/static_rows.hpp"
#include "platform/adodb/session/freshness.hpp"
#include "platform/adodb/session/shared_session.hpp"
#include "platform/adodb/sql/select_shape.hpp"

namespace ADODB::engine {

// A copy made when it is opened. A row that is no longer fresh is looked for in the database, by all its
// values, before it is shown: one that was changed or deleted meanwhile is stepped over. Each look is a walk
// over the whole table.
class KeylessRows : public RowSource {
 public:
  // REQUIRES: `table` is addressed by whole rows.
  KeylessRows(std::shared_ptr<SharedSession> session, SelectShape select, const TableShape& table,
              bool isDynamic, std::size_t mostRows);

  const std::vector<Column>& Columns() const override { return columns_; }
  const std::vector<Column>& KeyColumns() const { return keyColumns_; }
  bool Reach(std::size_t ordinal) override { return copy_->Reach(ordinal); }
  std::size_t KnownCount() const override { return copy_->KnownCount(); }
  const Row* At(std::size_t ordinal, std::span<const std::uint32_t> upcoming) override;
  std::size_t Append(Row row) override { return copy_->Append(std::move(row)); }
  void Replace(std::size_t ordinal, Row row) override { copy_->Replace(ordinal, std::move(row)); }
  bool IsDynamic() const override { return isDynamic_; }
  std::size_t Requery(std::size_t ordinal, const Visit& visit) override;
  bool Holds(std::size_t column, const automation::Variant& value) const override;

 private:
  bool IsOutdated(const Freshness::Stamp& stamp) const;
  void Copy();
  bool IsStillThere(const Row& row) const;

  std::shared_ptr<SharedSession> session_;
  SelectShape select_;
  std::string list_;  // with the whole row behind it
  const std::size_t keyCount_;
  const bool isDynamic_;
  const std::size_t mostRows_;
  std::vector<Column> columns_;  // the same for every copy
  std::vector<Column> keyColumns_;
  std::unique_ptr<StaticRows> copy_;
  Freshness::Stamp copiedAt_;
};

}  // namespace ADODB::engine
