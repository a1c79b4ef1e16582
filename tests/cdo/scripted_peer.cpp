#include "tests/cdo/scripted_peer.hpp"

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>
#include <string_view>

namespace orvane_test {

ScriptedPeer::ScriptedPeer(std::vector<std::vector<std::string>> scripts) : scripts_(std::move(scripts)) {
  listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  auto* plain = reinterpret_cast<sockaddr*>(&address);
  if (bind(listener_, plain, size) != 0 || listen(listener_, 8) != 0 ||
      getsockname(listener_, plain, &size) != 0 || pipe(stop_) != 0) {
    throw std::runtime_error("no listener");
  }
  port_ = ntohs(address.sin_port);
  thread_ = std::thread([this] { Serve(); });
}

ScriptedPeer::~ScriptedPeer() {
  Finish();
}

std::vector<std::string> ScriptedPeer::Finish() {
  if (thread_.joinable()) {
    static_cast<void>(!write(stop_[1], "x", 1));
    thread_.join();
    for (const int descriptor : {listener_, stop_[0], stop_[1]}) close(descriptor);
  }
  return received_;
}

void ScriptedPeer::Serve() {
  for (std::size_t next = 0;; ++next) {
    pollfd waiting[] = {{listener_, POLLIN, 0}, {stop_[0], POLLIN, 0}};
    if (poll(waiting, 2, 30'000) <= 0 || waiting[1].revents != 0) return;
    const int client = accept(listener_, nullptr, nullptr);
    if (client < 0) return;
    if (next < scripts_.size()) Converse(client, scripts_[next]);
    close(client);
  }
}

void ScriptedPeer::Converse(int client, const std::vector<std::string>& script) {
  std::string pending;
  bool inMail = false;
  for (const std::string& answer : script) {
    if (answer == "CLOSE") return;
    if (answer == "RESET") {
      const linger hard{1, 0};
      setsockopt(client, SOL_SOCKET, SO_LINGER, &hard, sizeof hard);
      return;
    }
    if (answer == "DRIP") return Drip(client);
    if (answer != "SILENCE") {
      const std::string line = answer + "\r\n";
      static_cast<void>(!send(client, line.data(), line.size(), MSG_NOSIGNAL));
      inMail = answer.substr(0, 3) == "354";
    }
    const std::string end = inMail ? "\r\n.\r\n" : "\r\n";
    while (pending.find(end) == std::string::npos) {
      pollfd waiting[] = {{client, POLLIN, 0}, {stop_[0], POLLIN, 0}};
      char buffer[4096];
      if (poll(waiting, 2, 30'000) <= 0 || waiting[1].revents != 0) return;
      const ssize_t count = read(client, buffer, sizeof buffer);
      if (count <= 0) return;
      pending.append(buffer, static_cast<std::size_t>(count));
      if (answer == "SILENCE") pending.clear();
    }
    received_.push_back(pending.substr(0, pending.find(end)));
    pending.erase(0, pending.find(end) + end.size());
  }
}

void ScriptedPeer::Drip(int client) {
  constexpr std::string_view kLine = "250-still at it\r\n";
  while (send(client, kLine.data(), kLine.size(), MSG_NOSIGNAL) > 0) {
    pollfd stop{stop_[0], POLLIN, 0};
    if (poll(&stop, 1, 50) != 0) return;
  }
}

}  // namespace orvane_test
