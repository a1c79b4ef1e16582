#include "tests/servers/tcp_proxy.hpp"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <stdexcept>
#include <utility>

namespace orvane_test {
namespace {

sockaddr_in Loopback(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

bool SendAll(int socket, std::string_view data) {
  while (!data.empty()) {
    const ssize_t count = send(socket, data.data(), data.size(), MSG_NOSIGNAL);
    if (count <= 0) return false;
    data.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

void Close(int& socket) {
  if (socket >= 0) close(socket);
  socket = -1;
}

// Whether there is something to read, or an end of it, within the time.
bool Readable(int socket, std::chrono::milliseconds time) {
  pollfd each{socket, POLLIN, 0};
  return poll(&each, 1, static_cast<int>(time.count())) > 0;
}

constexpr std::chrono::milliseconds kGlance{50};
constexpr std::chrono::minutes kPatience{1};

}  // namespace

TcpProxy::TcpProxy(int serverPort, Watch watch) : serverPort_(serverPort), watch_(std::move(watch)) {
  listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address = Loopback(0);
  socklen_t size = sizeof address;
  if (listener_ < 0 || bind(listener_, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
      listen(listener_, 16) != 0 ||
      getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    throw std::runtime_error("no port for the proxy");
  }
  port_ = ntohs(address.sin_port);
  accepting_ = std::thread([this] { Accept(); });
}

TcpProxy::~TcpProxy() {
  stopping_ = true;
  accepting_.join();
  for (std::thread& connection : connections_) connection.join();
  close(listener_);
}

void TcpProxy::TakeNoMore() {
  takesMore_ = false;
  while (open_ > 1) std::this_thread::yield();  // all but the one that asks for it
}

void TcpProxy::Accept() {
  while (!stopping_) {
    if (!Readable(listener_, kGlance)) continue;
    int program = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (program < 0) continue;
    if (!takesMore_) {
      Close(program);
      continue;
    }
    ++open_;
    connections_.emplace_back([this, program] {
      Serve(program);
      --open_;
    });
  }
}

void TcpProxy::Serve(int program) {
  int server = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const sockaddr_in address = Loopback(serverPort_);
  bool open = connect(server, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  std::array<char, 65'536> buffer{};
  while (open && !stopping_ && takesMore_) {
    std::array<pollfd, 2> ends{pollfd{program, POLLIN, 0}, pollfd{server, POLLIN, 0}};
    if (poll(ends.data(), ends.size(), static_cast<int>(kGlance.count())) <= 0) continue;
    for (const pollfd& end : ends) {
      if (!open || end.revents == 0) continue;
      const ssize_t count = recv(end.fd, buffer.data(), buffer.size(), 0);
      if (count <= 0) {
        open = false;
      } else if (const std::string_view data(buffer.data(), static_cast<std::size_t>(count));
                 end.fd == server) {
        open = SendAll(program, data);
      } else {
        open = DealWith(data, program, server);
      }
    }
  }
  Close(program);
  Close(server);
}

bool TcpProxy::DealWith(std::string_view sent, int& program, int server) {
  std::unique_lock lock(watching_, std::defer_lock);
  while (!lock.try_lock_for(kGlance)) {
    if (!takesMore_) return false;
  }
  const Fate fate = takesMore_ ? watch_(sent) : Fate::CutOff;
  lock.unlock();
  switch (fate) {
    case Fate::PassedOn:
      return SendAll(server, sent);
    case Fate::CutOff:
      return false;
    case Fate::Unanswered:
      SendAll(server, sent);
      Readable(server, kPatience);
      return false;
    case Fate::DeliveredLate:
      Close(program);
      std::this_thread::sleep_for(std::chrono::milliseconds(800));
      SendAll(server, sent);
      Readable(server, kPatience);
      return false;
  }
  return false;
}

}  // namespace orvane_test
