// A database server of a test's own to which something happens in the middle of a run.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "tests/servers/server_state.hpp"

namespace orvane_test {

struct Outage {
  std::string server;  // "postgresql" or "mariadb"
  enum What { Stopped, Killed, Restarted } what;
};
std::string NameOf(const Outage& outage);
inline void PrintTo(const Outage& outage, std::ostream* out) {
  *out << NameOf(outage);
}

// Each server stopped as its operator does it, killed as by a crash, and killed and back at once.
std::vector<Outage> AllOutages();

class DyingServer {
 public:
  explicit DyingServer(Outage outage);

  const Server& Itself() const { return server_; }
  // Causes the outage; only the first call does.
  void Fail();
  bool HasFailed() const { return failed_; }
  // Has the server running again.
  void Recover();

 private:
  Outage outage_;
  Server server_;
  bool failed_ = false;
};

// A message of the error log with what the driver says about a lost or refused connection as "<lost>".
std::string WithoutDriversWords(std::string message);

}  // namespace orvane_test
