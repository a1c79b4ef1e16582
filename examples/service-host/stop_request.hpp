// SIGTERM and SIGINT, waited for or asked about, never acted on by themselves.
#pragma once

#include <chrono>
#include <csignal>

class StopRequest {
 public:
  // From now on both are kept back, on every thread that is started later as well.
  StopRequest();

  // Whether one has come. May be called on any thread.
  bool WasMade() const;
  // Waits for one; false when none comes in time. The time is one of the steady clock: a machine's clock that
  // is set meanwhile makes it neither longer nor shorter.
  bool Wait(std::chrono::seconds longest) const;

 private:
  sigset_t signals_;
};
