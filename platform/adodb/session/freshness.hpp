// How long rows that were read may be acted on.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <utility>

#include "platform/adodb/session/coarse_clock.hpp"

namespace ADODB::engine {

// One for all connections and record sets of a run: a write by any of them counts for every other. Safe to
// use from several threads.
class Freshness {
 public:
  // Rows that were read longer ago are old.
  static constexpr std::chrono::milliseconds kLimit{100};

  // When rows were read.
  struct Stamp {
    std::chrono::steady_clock::time_point time;
    std::uint64_t writes = 0;
  };

  explicit Freshness(Clock clock = &CoarseNow) : clock_(std::move(clock)) {}

  // To be called for everything that may change what a database holds: a statement that is no SELECT, the end
  // of a transaction.
  void NoteWrite() noexcept { writes_.fetch_add(1, std::memory_order_relaxed); }

  // REQUIRES: taken no earlier than the database began to answer, or the rows would be old on arrival where a
  // database is slow, and would be read for ever.
  Stamp Now() const { return {clock_(), writes_.load(std::memory_order_relaxed)}; }

  bool IsOld(const Stamp& stamp) const { return clock_() - stamp.time > kLimit; }
  // Whether twice as many such rows would be old before all of them are shown.
  bool IsAgeing(const Stamp& stamp) const { return clock_() - stamp.time > kLimit / 2; }
  bool WroteSince(const Stamp& stamp) const {
    return writes_.load(std::memory_order_relaxed) != stamp.writes;
  }

 private:
  const Clock clock_;
  std::atomic<std::uint64_t> writes_{0};
};

}  // namespace ADODB::engine
