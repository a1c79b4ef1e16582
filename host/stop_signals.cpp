#include "host/stop_signals.hpp"

#include <unistd.h>

#include <string_view>

#include "run/exit_codes.hpp"

namespace orvane::host {
namespace {

volatile std::sig_atomic_t requests = 0;

void Tell(std::string_view text) {
  static_cast<void>(!write(STDERR_FILENO, text.data(), text.size()));
}

void End(int) {
  Tell("orvane-host: asked to stop while waiting; nothing was begun\n");
  _exit(kTryAgain);
}

void Note(int) {
  if (requests != 0) {
    Tell("orvane-host: asked to stop a second time; stopped on the spot\n");
    _exit(kUnfinished);
  }
  requests = 1;
  Tell("orvane-host: asked to stop; goes on to the next safe point\n");
}

void Install(int signal, void (*handler)(int), struct sigaction& before) {
  struct sigaction action {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;
  sigemptyset(&action.sa_mask);
  sigaction(signal, nullptr, &before);
  if (before.sa_handler != SIG_IGN) sigaction(signal, &action, nullptr);
}

}  // namespace

SignalHandlers::SignalHandlers(void (*handler)(int)) {
  Install(SIGTERM, handler, terminate_);
  Install(SIGINT, handler, interrupt_);
}

SignalHandlers::~SignalHandlers() {
  sigaction(SIGTERM, &terminate_, nullptr);
  sigaction(SIGINT, &interrupt_, nullptr);
}

StopRequest::StopRequest() : handlers_(&Note) {
  requests = 0;
}

bool StopRequest::WasMade() const {
  return requests != 0;
}

EndsWhenAsked::EndsWhenAsked() : handlers_(&End) {}

}  // namespace orvane::host
