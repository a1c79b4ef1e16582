#include "stop_request.hpp"

#include <cerrno>

StopRequest::StopRequest() {
  sigemptyset(&signals_);
  sigaddset(&signals_, SIGTERM);
  sigaddset(&signals_, SIGINT);
  pthread_sigmask(SIG_BLOCK, &signals_, nullptr);
}

bool StopRequest::WasMade() const {
  sigset_t pending;
  sigpending(&pending);
  return sigismember(&pending, SIGTERM) == 1 || sigismember(&pending, SIGINT) == 1;
}

bool StopRequest::Wait(std::chrono::seconds longest) const {
  const auto end = std::chrono::steady_clock::now() + longest;
  for (;;) {
    const auto left =
        std::chrono::duration_cast<std::chrono::nanoseconds>(end - std::chrono::steady_clock::now());
    if (left.count() <= 0) return WasMade();
    const timespec time{.tv_sec = static_cast<time_t>(left.count() / 1'000'000'000),
                        .tv_nsec = static_cast<long>(left.count() % 1'000'000'000)};
    if (sigtimedwait(&signals_, nullptr, &time) >= 0) return true;
    if (errno == EAGAIN) return false;
  }
}
