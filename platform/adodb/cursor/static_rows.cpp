#include "platform/adodb/cursor/static_rows.hpp"

#include <utility>

namespace ADODB::engine {
namespace {

constexpr std::size_t kSmallRows = 256;
constexpr std::size_t kSmallBytes = 256 * 1024;

}  // namespace

StaticRows::StaticRows(const Rows& rows, std::size_t keyCount) {
  const std::vector<Column>& all = rows.Columns();
  columns_ = keyCount == 0 ? rows.SharedColumns()
                           : std::make_shared<const std::vector<Column>>(
                                 all.begin(), all.end() - static_cast<std::ptrdiff_t>(keyCount));
  keyColumns_.assign(all.end() - static_cast<std::ptrdiff_t>(keyCount), all.end());
}

StaticRows::StaticRows(Rows& rows, std::size_t keyCount, std::size_t mostRows)
    : StaticRows(std::as_const(rows), keyCount) {
  const std::size_t count = rows.Columns().size();
  Row row;
  while ((mostRows == 0 || KnownCount() < mostRows) && rows.Next()) {
    row.resize(count);
    for (std::size_t i = 0; i < count; ++i) rows.ReadInto(i, row[i]);
    Push(row);
  }
}

void StaticRows::Push(Row& row) {
  if (!more_ && small_.size() < kSmallRows && smallBytes_ < kSmallBytes) {
    smallBytes_ += MemoryOf(row);
    small_.push_back(std::exchange(row, {}));
    return;
  }
  if (!more_) more_ = std::make_unique<SpilledRows>();
  more_->Push(row);
}

const Row* StaticRows::At(std::size_t ordinal, std::span<const std::uint32_t> /*upcoming*/) {
  return ordinal < small_.size() ? &small_[ordinal] : more_->At(ordinal - small_.size());
}

std::size_t StaticRows::Append(Row row) {
  Push(row);
  return KnownCount() - 1;
}

void StaticRows::Replace(std::size_t ordinal, Row row) {
  if (ordinal < small_.size()) {
    small_[ordinal] = std::move(row);
  } else {
    more_->Replace(ordinal - small_.size(), std::move(row));
  }
}

}  // namespace ADODB::engine
