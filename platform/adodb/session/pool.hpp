// Physical connections kept for the next user.
//
// Jobs open a connection in every procedure; opening a physical one each time would cost more than the work.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/adodb/changes.hpp"
#include "platform/adodb/session/coarse_clock.hpp"
#include "platform/adodb/session/freshness.hpp"
#include "platform/adodb/session/provider.hpp"
#include "platform/adodb/session/statement_cache.hpp"

namespace ADODB::engine {

// Safe to use from several threads; a session belongs to one user from Acquire to GiveBack.
class Pool {
 public:
  static constexpr std::size_t kMostIdle = 8;              // of one connection string
  static constexpr std::chrono::seconds kPingAfter{2};     // idle for longer: asked whether it still answers
  static constexpr std::chrono::seconds kCloseAfter{120};  // idle for longer: closed

  // `observer` may be null, and `beforeChange` empty.
  explicit Pool(std::vector<std::shared_ptr<Provider>> providers, Clock clock = &CoarseNow,
                ChangeObserver* observer = nullptr, std::function<void()> beforeChange = {});
  ~Pool();

  struct Target;  // a connection string with its user

  // A session with what it knows, which goes before it.
  struct PooledSession {
    std::unique_ptr<Session> session;
    StatementCache statements;
    Parameters values;  // of the statement that was prepared last; here because the memory serves all of them
    Target* target = nullptr;
    // How many sessions of the target were lost before this one was last known to answer.
    std::uint64_t losses = 0;
  };
  using Lease = std::unique_ptr<PooledSession>;

  // A session that is ready for use: an idle one, or a new one. 3706 when no provider serves the string.
  Lease Acquire(std::string_view connectionString, std::string_view user, std::string_view password);

  // Takes the session back. A lost one is thrown away, and the other sessions of its target, idle or in use,
  // are pinged before they are handed out again.
  void GiveBack(Lease lease) noexcept;

  // Of the rows that are read through the pool's sessions.
  Freshness& GetFreshness() { return freshness_; }

  // Who is told of what the pool's sessions change; null where nobody is.
  ChangeObserver* Observer() const { return observer_; }

  // To be called before every change of rows and every commit; what it raises keeps them from being made.
  void BeforeChange() const {
    if (beforeChange_) beforeChange_();
  }

 private:
  struct Idle {
    Lease lease;
    std::chrono::steady_clock::time_point since;
  };

  // The mutex is held when this begins and when it ends.
  Target& TargetOf(std::string_view connectionString, std::string_view user, std::string_view password,
                   std::unique_lock<std::mutex>& lock);

  const std::vector<std::shared_ptr<Provider>> providers_;
  const Clock clock_;
  Freshness freshness_;
  ChangeObserver* const observer_;
  const std::function<void()> beforeChange_;
  std::mutex mutex_;
  struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
  };
  using Targets = std::unordered_map<std::string, std::unique_ptr<Target>, TextHash, std::equal_to<>>;
  Targets targets_;                                  // never taken out, as leases point to them
  const Targets::value_type* lastTarget_ = nullptr;  // asked for last
};

}  // namespace ADODB::engine
