// Rows that were written into a customer's file, to recognize them when they are deleted.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/adodb/recordset.hpp"

namespace OrvaneProcess {

// A digest of each row's values but the approximate numbers, which may come in other digits when they are
// read in another way. A row that was edited has another digest; equal rows are counted.
class RowDigests {
 public:
  void Add(ADODB::Fields& row);

  // How many of the rows are not among `written`.
  std::size_t NotAmong(const RowDigests& written) const;

 private:
  std::vector<std::uint64_t> digests_;
};

}  // namespace OrvaneProcess
