// A database server of a test's own to which something happens in the middle of a run.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "tests/servers/server_state.hpp"

namespace orvane_test {

struct Trouble {
  std::string server;  // "postgresql" or "mariadb"
  enum What { Stopped, Killed, Restarted } what;
};
std::string NameOf(const Trouble& trouble);
inline void PrintTo(const Trouble& trouble, std::ostream* out) {
  *out << NameOf(trouble);
}

// Each server stopped as its operator does it, killed as by a crash, and killed and back at once.
std::vector<Trouble> AllTroubles();

class DyingServer {
 public:
  explicit DyingServer(Trouble trouble);

  const Server& Itself() const { return server_; }
  // Lets it happen; only the first call does.
  void Befall();
  bool Befallen() const { return befallen_; }
  // Has the server running again.
  void Recover();

 private:
  Trouble trouble_;
  Server server_;
  bool befallen_ = false;
};

// A message of the error log with what the driver says about a lost or refused connection as "<lost>".
std::string WithoutDriversWords(std::string message);

}  // namespace orvane_test
