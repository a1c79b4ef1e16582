// Rows that were written into a customer's file, to know them again when they are deleted.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/adodb/recordset.hpp"

namespace OrvaneProcess {

// Remembers of each row a mark made of all its values but the approximate numbers, which may come in other
// digits when they are read in another way. A row that was edited has another mark; equal rows are counted.
class RowMarks {
 public:
  void Add(ADODB::Fields& row);

  // How many of the rows are not among `written`.
  std::size_t NotAmong(const RowMarks& written) const;

 private:
  std::vector<std::uint64_t> marks_;
};

}  // namespace OrvaneProcess
