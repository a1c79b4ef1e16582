// The rows behind a record set, by position.
//
// Positions ("ordinals") count from 0 in the order of the result; a record that is gone leaves a hole. A
// source keeps no statement open between calls.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "platform/adodb/cursor/holes.hpp"
#include "platform/adodb/cursor/row_codec.hpp"
#include "platform/adodb/sql/column.hpp"

namespace ADODB::engine {

class RowSource {
 public:
  virtual ~RowSource() = default;

  // The columns of the result. A row may hold more values: its key, behind them.
  virtual const std::vector<Column>& Columns() const = 0;

  // Whether there is such an ordinal, as far as the source can tell without looking whether its row is still
  // there.
  virtual bool Reach(std::size_t ordinal) = 0;
  virtual std::size_t KnownCount() const = 0;

  // The row, or null when it is gone. `upcoming` are the ordinals that will be asked for next, beginning with
  // this one; empty when that will be the ones that follow. The row is valid until the next call of any
  // member. Unless the source is a static copy its values are those that the database held Freshness::kLimit
  // ago at most; and those of a dynamic source were read since the run wrote last. Such a source may give the
  // ordinals from this one on to other rows, until Requery has been called.
  virtual const Row* At(std::size_t ordinal, std::span<const std::uint32_t> upcoming) = 0;
  // Whether At gives what the database holds, and not what was read when the source was opened.
  virtual bool RereadsRows() const { return false; }

  // A new row, which the database has already, at the end; or a changed one in its place; keys included.
  // Append gives the new row's ordinal.
  virtual std::size_t Append(Row row) = 0;
  virtual void Replace(std::size_t ordinal, Row row) = 0;

  // The walk begins again at the front.
  virtual void Rewind() {}

  // For a dynamic source: reads its rows anew from the first to the last, shows each to `visit`, and keeps
  // their ordinals from now on. Gives the ordinal now of the row that had `ordinal`, or the number of rows
  // when it is gone.
  using Visit = std::function<void(std::size_t ordinal, const Row& row)>;
  virtual bool IsDynamic() const { return false; }
  virtual std::size_t Requery(std::size_t ordinal, const Visit&) { return ordinal; }
  // For a dynamic source: whether the set as the database sees it now has a row whose `column`, which stands
  // for one of the table, equals `value`.
  virtual bool Holds(std::size_t /*column*/, const automation::Variant& /*value*/) const { return false; }

  // The row was deleted through this record set.
  void Remove(std::size_t ordinal) { holes_.Add(ordinal); }
  bool IsRemoved(std::size_t ordinal) const { return holes_.Has(ordinal); }
  std::size_t LeftCount() const { return KnownCount() - holes_.Count(); }

 protected:
  Holes holes_;
};

}  // namespace ADODB::engine
