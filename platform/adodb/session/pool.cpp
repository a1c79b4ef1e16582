#include "platform/adodb/session/pool.hpp"

#include <utility>

namespace ADODB::engine {

struct Pool::Target {
  std::shared_ptr<Provider> provider;
  ConnectionString text;
  std::deque<Idle> idle;     // the one used last at the back
  std::uint64_t losses = 0;  // sessions that were found lost; what ended one may have ended others
};

Pool::Pool(std::vector<std::shared_ptr<Provider>> providers, Clock clock, ChangeObserver* observer,
           std::function<void()> beforeChange)
    : providers_(std::move(providers)),
      clock_(std::move(clock)),
      freshness_(clock_),
      observer_(observer),
      beforeChange_(std::move(beforeChange)) {}

Pool::~Pool() = default;

Pool::Target& Pool::TargetOf(std::string_view connectionString, std::string_view user,
                             std::string_view password, std::unique_lock<std::mutex>& lock) {
  std::string withUser;
  if (!user.empty() || !password.empty()) {
    withUser.append(connectionString).append(1, '\0').append(user).append(1, '\0').append(password);
  }
  const std::string_view key = withUser.empty() ? connectionString : withUser;
  if (lastTarget_ != nullptr && lastTarget_->first == key) return *lastTarget_->second;
  if (const auto found = targets_.find(key); found != targets_.end()) {
    lastTarget_ = &*found;
    return *found->second;
  }
  lock.unlock();
  auto target = std::make_unique<Target>();
  target->text = ConnectionString::Parse(connectionString);
  if (!user.empty()) target->text.Set("User ID", std::string(user));
  if (!password.empty()) target->text.Set("Password", std::string(password));
  target->provider = ProviderOf(providers_, target->text);
  lock.lock();
  return *targets_.emplace(key, std::move(target)).first->second;
}

Pool::Lease Pool::Acquire(std::string_view connectionString, std::string_view user,
                          std::string_view password) {
  const auto now = clock_();
  std::vector<Idle> expired;  // closed outside the lock
  std::unique_lock lock(mutex_);
  Target& target = TargetOf(connectionString, user, password, lock);
  std::uint64_t losses = target.losses;
  while (!target.idle.empty() && now - target.idle.front().since > kCloseAfter) {
    expired.push_back(std::move(target.idle.front()));
    target.idle.pop_front();
  }
  while (!target.idle.empty()) {
    Lease lease = std::move(target.idle.back().lease);
    const bool mustAnswer = lease->losses != losses || now - target.idle.back().since > kPingAfter;
    target.idle.pop_back();
    lease->losses = losses;
    lock.unlock();
    if (!mustAnswer || lease->session->Ping()) return lease;
    lease.reset();  // closed outside the lock as well
    lock.lock();
    losses = ++target.losses;
  }
  lock.unlock();
  auto lease = std::make_unique<PooledSession>();
  lease->target = &target;
  lease->losses = losses;
  lease->session = target.provider->Connect(target.text);
  return lease;
}

void Pool::GiveBack(Lease lease) noexcept {
  Lease surplus;
  try {
    const bool usable = lease->session->Reset();
    const std::lock_guard lock(mutex_);
    std::deque<Idle>& idle = lease->target->idle;
    if (!usable) {
      ++lease->target->losses;
      return;
    }
    if (idle.size() >= kMostIdle) {
      surplus = std::move(idle.front().lease);
      idle.pop_front();
    }
    idle.push_back({std::move(lease), clock_()});
  } catch (...) {
    // Whatever went wrong with it, the session is not used again.
  }
}

}  // namespace ADODB::engine
