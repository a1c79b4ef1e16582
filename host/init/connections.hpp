// The connection strings of a new suite, from where nobody else sees them.
#pragma once

#include <istream>
#include <string>

namespace orvane::host {

struct Connections {
  std::string database;
  std::string catalogue;
};

// Two lines, the suite's database and the catalogue's; empty lines between and behind them do not count.
// FAILS: UsageError for fewer lines or more.
Connections ReadConnections(std::istream& from);

// The same from a file, or from standard input for "-". FAILS: UsageError also for a file that cannot be
// read.
Connections ReadConnections(const std::string& file);

}  // namespace orvane::host
