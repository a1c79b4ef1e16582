#include "run/lock/suite_lock.hpp"

#include <thread>
#include <utility>

namespace orvane_lock {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kBetweenTries(100);

// Tries until it works or the time is over. Somebody who only asks who holds a file holds it for an instant,
// so one try that fails does not mean that it is taken.
class Waiting {
 public:
  explicit Waiting(const SuiteLock::Request& request) : request_(request), start_(Clock::now()) {}

  void Until(const std::function<bool()>& taken, const std::function<std::string()>& holder) {
    for (int tries = 1; !taken(); ++tries) {
      const bool surelyHeld = tries > 2;
      if (surelyHeld) {
        const std::string who = holder();
        if (request_.longest && Clock::now() - start_ >= *request_.longest) throw Busy(who);
        if (request_.waiting && who != told_) request_.waiting(who);
        told_ = who;
        if (request_.givenUp && request_.givenUp()) throw GivenUp();
      }
      std::this_thread::sleep_for(surelyHeld ? kBetweenTries : std::chrono::milliseconds(10));
    }
  }

 private:
  const SuiteLock::Request& request_;
  const Clock::time_point start_;
  std::string told_;
};

}  // namespace

bool MeansUnreachable(const automation::Error& error) {
  const std::string_view kind = std::string_view(error.SqlState()).substr(0, 2);
  if (kind.empty()) return false;
  for (const std::string_view wrong : {"01", "28", "3D", "42", "IM"}) {
    if (kind == wrong) return false;
  }
  return true;
}

SuiteLock::SuiteLock(DatabaseLock::Opening open) : database_(std::move(open)) {}

std::unique_ptr<SuiteLock> SuiteLock::Take(const Request& request) {
  Waiting waiting(request);
  std::unique_ptr<SuiteLock> lock(new SuiteLock(request.open));
  waiting.Until(
      [&] {
        lock->file_ = FileLock::TryTake(request.file, ThisProcess({}));
        return lock->file_ != nullptr;
      },
      [&] { return Description(FileLock::HolderOf(request.file).value_or(Holder())); });
  try {
    waiting.Until([&] { return lock->database_.TryTake(); },
                  [&] {
                    const std::string holder = lock->database_.Holder();
                    return holder.empty() ? "another session with the suite's database" : holder;
                  });
  } catch (const automation::Error& error) {
    if (MeansUnreachable(error)) throw Unreachable(error.Description());
    throw;
  }
  return lock;
}

bool SuiteLock::BeginJob(std::string_view job) {
  file_->WriteHolder(ThisProcess(job));
  return database_.IsHeld();
}

}  // namespace orvane_lock
