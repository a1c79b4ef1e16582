// One run at a time: the jobs expect that whoever calls them lets no two runs of a suite overlap.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "platform/automation/error.hpp"
#include "run/lock/database_lock.hpp"
#include "run/lock/file_lock.hpp"

namespace orvane_lock {

// Somebody else held the suite for longer than was to be waited; what() says who.
class Busy : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Request::givenUp said so.
class GivenUp : public std::runtime_error {
 public:
  GivenUp() : std::runtime_error("given up") {}
};

// The database, where the other half of the lock is, could not be reached; what() is the engine's message.
class Unreachable : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Whether an engine's error tells of a server that is down, and not of a string, a password or a right that
// is wrong.
bool MeansUnreachable(const automation::Error& error);

// Two locks, both held as long as the object lives: a file, for the processes of one machine or of those that
// share the folder, and the database's own, for the servers of a farm.
class SuiteLock {
 public:
  struct Request {
    std::filesystem::path file;
    DatabaseLock::Opening open;
    std::optional<std::chrono::seconds> longest = std::nullopt;  // to wait; nothing: without limit
    // Called when there is something to wait for, and again when somebody else holds it.
    std::function<void(const std::string& holder)> waiting = nullptr;
    // Asked again and again meanwhile: whether to wait no longer. May be null.
    std::function<bool()> givenUp = nullptr;
  };

  // Raises Busy, GivenUp, Unreachable, what FileLock::TryTake raises, and automation::Error for a connection
  // string, an account or a lock of the database that is not as it should be.
  static std::unique_ptr<SuiteLock> Take(const Request& request);

  // Whether a job may begin: the database's lock is still held. Tells those who ask that this job runs.
  bool BeginJob(std::string_view job);
  // Whether it was lost meanwhile, as far as is known: what another program does is no longer kept apart.
  bool IsLost() const { return database_.IsLost(); }

 private:
  explicit SuiteLock(DatabaseLock::Opening open);

  std::unique_ptr<FileLock> file_;
  DatabaseLock database_;
};

}  // namespace orvane_lock
