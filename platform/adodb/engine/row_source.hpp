// The rows behind a record set, by position.
//
// Positions ("ordinals") count from 0 in the order of the result and never change; a record that is gone
// leaves a hole. A source keeps no statement open between calls.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "platform/adodb/engine/column.hpp"
#include "platform/adodb/engine/row_codec.hpp"

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
  // member.
  virtual const Row* At(std::size_t ordinal, std::span<const std::uint32_t> upcoming) = 0;

  // A new row at the end, or a changed one in its place; keys included. Append gives the new row's ordinal.
  virtual std::size_t Append(Row row) = 0;
  virtual void Replace(std::size_t ordinal, Row row) = 0;
};

}  // namespace ADODB::engine
