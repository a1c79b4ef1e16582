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
  // ago at most; and a source that is open to changes (a dynamic cursor's) has read them since the run wrote
  // last. Such a one may give the ordinals from this one on to other rows, until ReadAgain has been called.
  virtual const Row* At(std::size_t ordinal, std::span<const std::uint32_t> upcoming) = 0;

  // A new row, which the database has already, at the end; or a changed one in its place; keys included.
  // Append gives the new row's ordinal.
  virtual std::size_t Append(Row row) = 0;
  virtual void Replace(std::size_t ordinal, Row row) = 0;

  // The walk begins again at the front.
  virtual void Rewind() {}

  // For a source that is open to changes: reads its rows anew from the first to the last, shows each to
  // `visit`, and keeps their ordinals from now on. Gives the ordinal now at the row that had `ordinal`, or
  // the number of rows when it is gone.
  using Visit = std::function<void(std::size_t ordinal, const Row& row)>;
  virtual bool IsOpenToChanges() const { return false; }
  virtual std::size_t ReadAgain(std::size_t ordinal, const Visit&) { return ordinal; }

  // The row was deleted through this record set.
  void Remove(std::size_t ordinal) { holes_.Add(ordinal); }
  bool IsRemoved(std::size_t ordinal) const { return holes_.Has(ordinal); }
  std::size_t LeftCount() const { return KnownCount() - holes_.Count(); }

 protected:
  Holes holes_;
};

}  // namespace ADODB::engine
