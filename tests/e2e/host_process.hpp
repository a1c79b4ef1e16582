// Runs the real orvane-host as an operator would.
#pragma once

#include <sys/types.h>

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace orvane_test {

struct Outcome {
  int exitCode = -1;  // -1: ended by a signal
  std::string out;
  std::string err;
};

// A program that has been started and is let run beside the test; killed when it is let go.
class RunningHost {
 public:
  explicit RunningHost(const std::vector<std::string>& words,
                       const std::map<std::string, std::string>& environment = {}, bool unprivileged = false);
  ~RunningHost();
  RunningHost(const RunningHost&) = delete;
  RunningHost& operator=(const RunningHost&) = delete;

  pid_t Pid() const { return child_; }
  // Reads its standard error until the text has come; raises when it ends before, or is silent for five
  // minutes.
  void AwaitError(std::string_view text);
  // Closes the test's end of its standard output and error: whoever reads hangs up.
  void HangUp();
  void Signal(int number) const;
  // Waits for its end and reads nothing meanwhile of what it writes.
  void AwaitEnd() const;
  // Its end and all that it has written; raises when it is silent for five minutes.
  Outcome Wait();

 private:
  struct Pipe;
  bool ReadSome();  // false when both streams have ended

  std::unique_ptr<Pipe> out_;
  std::unique_ptr<Pipe> err_;
  Outcome outcome_;
  pid_t child_ = -1;
};

// Runs the binary with the words as its arguments and waits for it. The environment holds PATH, LC_ALL=C and
// TZ=UTC, and whatever `environment` adds or replaces.
Outcome RunHost(const std::vector<std::string>& words,
                const std::map<std::string, std::string>& environment = {});

// The same as an unprivileged user, for whom permissions count: root is refused nothing.
Outcome RunHostUnprivileged(const std::vector<std::string>& words,
                            const std::map<std::string, std::string>& environment = {});

// The user and group that RunHostUnprivileged becomes when the tests run as root.
constexpr unsigned kUnprivilegedId = 65534;

}  // namespace orvane_test
