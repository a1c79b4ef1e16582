#include "host/stop_signals.hpp"

#include <unistd.h>

#include <string_view>

#include "host/exit_codes.hpp"

namespace orvane_host {
namespace {

void End(int) {
  constexpr std::string_view kTold = "orvane-host: asked to stop while waiting; nothing was begun\n";
  static_cast<void>(!write(STDERR_FILENO, kTold.data(), kTold.size()));
  _exit(kTryAgain);
}

void Install(int signal, struct sigaction& before) {
  struct sigaction end {};
  end.sa_handler = &End;
  sigemptyset(&end.sa_mask);
  sigaction(signal, nullptr, &before);
  if (before.sa_handler != SIG_IGN) sigaction(signal, &end, nullptr);
}

}  // namespace

EndsWhenAsked::EndsWhenAsked() {
  Install(SIGTERM, terminate_);
  Install(SIGINT, interrupt_);
}

EndsWhenAsked::~EndsWhenAsked() {
  sigaction(SIGTERM, &terminate_, nullptr);
  sigaction(SIGINT, &interrupt_, nullptr);
}

}  // namespace orvane_host
