// A test runtime on a real SQLite database, reached through watched ADO. The database is empty: each test
// makes the tables that it needs.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "tests/doubles/watched_adodb.hpp"
#include "tests/support/sqlite_database.hpp"
#include "tests/support/test_runtime.hpp"

namespace orvane_test {

// Calls `run` again and again, letting a later step of ADO raise 70 each time, until a call comes to its end
// undisturbed. `run` deals with what is raised. After each call no connection and no record set may be open,
// and unless `closing` says that its release may close it, each connection must have been closed. The number
// of calls.
enum class Closing { Explicit, ByRelease };
int LetEveryStepFail(AdodbJournal& adodb, const std::function<void()>& run,
                     Closing closing = Closing::Explicit);

class DatabaseEnvironment : public TestRuntime {
 public:
  explicit DatabaseEnvironment(bool wal = true);

  int LetEveryStepFail(const std::function<void()>& run, Closing closing = Closing::Explicit) {
    return orvane_test::LetEveryStepFail(*adodb, run, closing);
  }

  TemporaryFolder folder;
  SqliteDatabase database;
  std::shared_ptr<AdodbJournal> adodb;
};

}  // namespace orvane_test
