// The rows of a cursor that are in memory.
#pragma once

#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

#include "platform/adodb/cursor/row_codec.hpp"
#include "platform/adodb/session/freshness.hpp"
#include "platform/adodb/session/provider.hpp"

namespace ADODB::engine {

// At most kMost rows or about kMostBytes. How many are read at a time: few where a walk may stop at once, or
// has just stopped to act, more and more while nothing happens and they do not grow old before they are
// reached.
class RowWindow {
 public:
  static constexpr std::size_t kMost = 1000;
  static constexpr std::size_t kFew = 32;
  static constexpr std::size_t kMostBytes = std::size_t{4} * 1024 * 1024;

  std::size_t Limit() const { return limit_; }
  void Grow() { limit_ = limit_ * 2 < kMost ? limit_ * 2 : kMost; }
  // A walk has stopped before `ordinal`. One that does so again and again gets twice as many rows as it gets
  // through.
  void StartSmall(std::size_t ordinal);
  void StartSmall() { limit_ = kFew; }
  void StartLarge() { limit_ = kMost; }

  bool IsEmpty() const { return ordinals_.empty(); }
  std::size_t Count() const { return rows_.size(); }
  bool IsFull() const { return bytes_ >= kMostBytes; }
  std::size_t First() const { return ordinals_.front(); }
  std::size_t Last() const { return ordinals_.back(); }
  // The row, null for one that was looked for and is gone; nothing for one that is not in the window.
  std::optional<const Row*> Find(std::size_t ordinal) const;

  // Empties the window, for rows that were read at the given moment. Rows that leave it lend their memory to
  // those that enter.
  void Start(Freshness::Stamp readAt);
  void Start() { Start(readAt_); }
  const Freshness::Stamp& ReadAt() const { return readAt_; }
  // The current row of a result, with its first `count` columns.
  Row Read(const Rows& rows, std::size_t count);

  // Ordinals ascend.
  void Push(std::size_t ordinal, Row row);
  // All at once; an empty row is one that is gone.
  void Fill(std::vector<std::size_t> ordinals, std::vector<Row> rows);
  void Drop(std::size_t ordinal);

 private:
  std::size_t PlaceOf(std::size_t ordinal) const;  // the number of rows for one that is not here

  std::vector<std::size_t> ordinals_;
  std::vector<Row> rows_;
  std::vector<Row> spare_;  // rows of the window before
  std::size_t bytes_ = 0;
  std::size_t limit_ = kMost;
  Freshness::Stamp readAt_;
};

}  // namespace ADODB::engine
