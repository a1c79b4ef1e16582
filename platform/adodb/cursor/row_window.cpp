#include "platform/adodb/cursor/row_window.hpp"

#include <algorithm>
#include <iterator>

namespace ADODB::engine {

std::size_t RowWindow::PlaceOf(std::size_t ordinal) const {
  if (ordinals_.empty() || ordinal < First() || ordinal > Last()) return ordinals_.size();
  // Most windows are without gaps.
  const std::size_t place = ordinal - First();
  if (place < ordinals_.size() && ordinals_[place] == ordinal) return place;
  const auto found = std::lower_bound(ordinals_.begin(), ordinals_.end(), ordinal);
  return *found == ordinal ? static_cast<std::size_t>(found - ordinals_.begin()) : ordinals_.size();
}

void RowWindow::StartSmall(std::size_t ordinal) {
  const bool wentOn = !IsEmpty() && ordinal >= First() && ordinal <= Last() + 1;
  limit_ = wentOn ? std::min(kFew, std::max(limit_ / 2, 2 * (ordinal - First() + 1))) : kFew;
}

std::optional<const Row*> RowWindow::Find(std::size_t ordinal) const {
  const std::size_t place = PlaceOf(ordinal);
  if (place == ordinals_.size()) return std::nullopt;
  return rows_[place].empty() ? nullptr : &rows_[place];
}

void RowWindow::Start(Freshness::Stamp readAt) {
  readAt_ = readAt;
  ordinals_.clear();
  if (spare_.empty()) {
    spare_.swap(rows_);
  } else {
    std::move(rows_.begin(), rows_.end(), std::back_inserter(spare_));
    rows_.clear();
  }
  bytes_ = 0;
}

Row RowWindow::Read(const Rows& rows, std::size_t count) {
  Row row;
  while (row.empty() && !spare_.empty()) {
    row = std::move(spare_.back());
    spare_.pop_back();
  }
  row.resize(count);
  for (std::size_t i = 0; i < count; ++i) rows.ReadInto(i, row[i]);
  return row;
}

void RowWindow::Push(std::size_t ordinal, Row row) {
  bytes_ += MemoryOf(row);
  ordinals_.push_back(ordinal);
  rows_.push_back(std::move(row));
}

void RowWindow::Fill(std::vector<std::size_t> ordinals, std::vector<Row> rows) {
  ordinals_ = std::move(ordinals);
  rows_ = std::move(rows);
}

void RowWindow::Drop(std::size_t ordinal) {
  const std::size_t place = PlaceOf(ordinal);
  if (place == ordinals_.size()) return;
  rows_.erase(rows_.begin() + static_cast<std::ptrdiff_t>(place));
  ordinals_.erase(ordinals_.begin() + static_cast<std::ptrdiff_t>(place));
}

}  // namespace ADODB::engine
