// Runs the real orvane-host as an operator would.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace orvane_test {

struct Outcome {
  int exitCode = -1;  // -1: ended by a signal
  std::string out;
  std::string err;
};

// Runs the binary with the words as its arguments and waits for it, at most a minute. The environment holds
// PATH, LC_ALL=C and TZ=UTC, and whatever `environment` adds or replaces.
Outcome RunHost(const std::vector<std::string>& words,
                const std::map<std::string, std::string>& environment = {});

// The same as an unprivileged user, for whom permissions count: root is refused nothing.
Outcome RunHostUnprivileged(const std::vector<std::string>& words);

// The user and group that RunHostUnprivileged becomes when the tests run as root.
constexpr unsigned kUnprivilegedId = 65534;

}  // namespace orvane_test
