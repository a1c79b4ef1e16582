// What happens when the program is asked to stop before it has begun anything.
#pragma once

#include <csignal>

namespace orvane_host {

// While it lives, SIGTERM and SIGINT end the program at once with kTryAgain, unless they were ignored before.
// For the time in which a run waits for its turn: nothing has been begun, so there is nothing to finish.
class EndsWhenAsked {
 public:
  EndsWhenAsked();
  ~EndsWhenAsked();
  EndsWhenAsked(const EndsWhenAsked&) = delete;
  EndsWhenAsked& operator=(const EndsWhenAsked&) = delete;

 private:
  struct sigaction terminate_ {};
  struct sigaction interrupt_ {};
};

}  // namespace orvane_host
