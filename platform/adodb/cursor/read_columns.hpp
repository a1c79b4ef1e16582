// Which values of the current record its reader was shown.
#pragma once

#include <cstddef>
#include <map>
#include <vector>

#include "platform/adodb/cursor/row_writer.hpp"

namespace ADODB::engine {

// A change or deletion compares these with what the database holds. Values that were written through the set
// are left out until they are read from the database again: it may hold them in another form, a date without
// its fraction for instance.
class ReadColumns {
 public:
  explicit ReadColumns(std::size_t columns) : columns_(columns) {}

  // Another record becomes the current one.
  void Forget() { any_ = false; }
  void Note(std::size_t column) {
    if (!any_) shown_.assign(columns_, false);
    any_ = true;
    shown_[column] = true;
  }

  // The columns to compare in the row with this ordinal; `all` of them where the row must still meet the
  // statement's condition, which may be about a column that nobody has read.
  std::vector<bool> ToCompare(std::size_t ordinal, bool all) const {
    std::vector<bool> columns = any_ && !all ? shown_ : std::vector<bool>(columns_, all);
    if (const auto own = written_.find(ordinal); own != written_.end()) {
      for (std::size_t i = 0; i < columns.size(); ++i) columns[i] = columns[i] && !own->second[i];
    }
    return columns;
  }

  void Wrote(std::size_t ordinal, const Changes& changes) {
    std::vector<bool>& own = written_[ordinal];
    own.resize(columns_, false);
    for (std::size_t i = 0; i < changes.size(); ++i) own[i] = own[i] || changes[i].has_value();
  }
  bool HasWritten() const { return !written_.empty(); }
  // REQUIRES: HasWritten(). The row's values were read from the database after all that was written.
  void ReadFromDatabase(std::size_t ordinal) {
    if (ordinal <= written_.rbegin()->first) written_.erase(ordinal);
  }

 private:
  std::size_t columns_;
  std::vector<bool> shown_;  // where there is any
  bool any_ = false;
  std::map<std::size_t, std::vector<bool>> written_;  // columns, by ordinal
};

}  // namespace ADODB::engine
