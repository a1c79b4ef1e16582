// A loopback proxy between a program and its server, for what networks and dying servers do to a connection.
#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <string_view>
#include <thread>
#include <vector>

namespace orvane_test {

class TcpProxy {
 public:
  enum class Fate {
    PassedOn,
    CutOff,         // the server never gets it: both ends are closed
    Unanswered,     // the server gets it and answers; the program never sees the answer, both ends are closed
    DeliveredLate,  // the program's end is closed at once, the server gets it almost a second later
  };
  // Decides about each piece of what the program sends, one at a time.
  using Watch = std::function<Fate(std::string_view sent)>;

  TcpProxy(int serverPort, Watch watch);
  ~TcpProxy();
  TcpProxy(const TcpProxy&) = delete;

  int Port() const { return port_; }
  // Closes all connections but the one that is being watched, and new ones as soon as they are made. For the
  // watch alone; the others are closed when it returns.
  void TakeNoMore();

 private:
  void Accept();
  void Serve(int program);
  bool DealWith(std::string_view sent, int& program, int server);

  int serverPort_;
  Watch watch_;
  std::timed_mutex watching_;
  int listener_ = -1;
  int port_ = 0;
  std::atomic<bool> takesMore_ = true;
  std::atomic<bool> stopping_ = false;
  std::atomic<int> open_ = 0;
  std::vector<std::thread> connections_;  // the accepting thread's own until that has ended
  std::thread accepting_;
};

}  // namespace orvane_test
