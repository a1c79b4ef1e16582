#include "host/init/connections.hpp"

#include <cerrno>
#include <fstream>
#include <iostream>
#include <system_error>
#include <vector>

#include "host/arguments.hpp"

namespace orvane::host {

Connections ReadConnections(std::istream& from) {
  std::vector<std::string> lines;
  for (std::string line; lines.size() < 3 && std::getline(from, line);) {
    line.erase(line.find_last_not_of(" \t\r") + 1);
    if (!line.empty()) lines.push_back(std::move(line));
  }
  if (lines.size() != 2) {
    throw UsageError(
        "--connections-from takes two lines: the connection string of the suite's database and that of the "
        "catalogue's");
  }
  return {lines[0], lines[1]};
}

Connections ReadConnections(const std::string& file) {
  if (file == "-") return ReadConnections(std::cin);
  errno = 0;
  std::ifstream stream(file);
  if (!stream)
    throw UsageError("--connections-from: " + file + ": " + std::generic_category().message(errno));
  return ReadConnections(stream);
}

}  // namespace orvane::host
