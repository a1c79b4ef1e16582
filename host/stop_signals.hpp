// What happens when the program is asked to stop, by SIGTERM or SIGINT. A signal that was ignored before
// stays ignored.
#pragma once

#include <csignal>

namespace orvane::host {

// Both signals' handlers as they were, put back at the end.
class SignalHandlers {
 public:
  explicit SignalHandlers(void (*handler)(int));
  ~SignalHandlers();
  SignalHandlers(const SignalHandlers&) = delete;
  SignalHandlers& operator=(const SignalHandlers&) = delete;

 private:
  struct sigaction terminate_ {};
  struct sigaction interrupt_ {};
};

// While it lives, the first signal is noted, for the run to stop at its next safe point; the second ends the
// program on the spot with kUnfinished. One at a time.
class StopRequest {
 public:
  StopRequest();

  bool WasMade() const;

 private:
  SignalHandlers handlers_;
};

// While it lives, a signal ends the program at once with kTryAgain. For the time in which a run waits for its
// turn: nothing has been begun, so there is nothing to finish.
class EndsWhenAsked {
 public:
  EndsWhenAsked();

 private:
  SignalHandlers handlers_;
};

}  // namespace orvane::host
