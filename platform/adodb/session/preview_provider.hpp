// Databases whose changes are seen by the connections that make them, and never made.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "platform/adodb/session/provider.hpp"

namespace ADODB::engine {

// Why nothing that follows would be worth anything. The changes made so far are undone all the same.
struct PreviewFailure {
  enum class Kind {
    Locked,           // somebody else's lock stood in the way, or the engine chose the preview to give way
    Unreachable,      // the database does not answer any more
    Full,             // the disk of the preview's own copy, or of the engine's log
    NotTransactional  // a table that takes no part in transactions, `what` is its name; it was not changed
  };
  Kind kind{};
  std::string what;  // the engine's own words
};

struct PreviewOptions {
  // Told on the thread that works with the connection. The process had better end in it: when it returns,
  // every further call fails with the same error.
  std::function<void(const PreviewFailure&)> failed;
  // True for sessions with databases that are a private copy already: nothing has to be rolled back.
  bool isCopy = false;
  // Called when the first transaction is begun that others may have to wait for. May be null.
  std::function<void()> holdsLocks = nullptr;
  // How long the engine may work at one statement; zero: without limit.
  std::chrono::seconds longestStatement{0};
};

// A provider for one preview, on one thread. All connections with one connection string work on one session
// of `real`, in one transaction that is rolled back in the end, each transaction of theirs a savepoint in it;
// so they see each other's changes at once. It waits for locks of others only as long as the dialect bounds
// it; how long it may hold its own is the caller's to say, by ending the process. A session that is lost, or
// whose process is killed, is rolled back by the engine.
std::shared_ptr<Provider> MakePreviewProvider(std::shared_ptr<Provider> real, PreviewOptions options);

}  // namespace ADODB::engine
