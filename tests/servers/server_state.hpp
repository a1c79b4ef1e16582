// Where the servers of this test run are, and how to stop and start one of them.
#pragma once

#include <string>
#include <string_view>

namespace orvane_test {

// A server started by tests/servers/NAME.sh, known by its state file. CTest starts the shared ones
// (see cmake/OrvaneServers.cmake); a test that stops its server in mid-work makes one of its own.
class Server {
 public:
  // The server that CTest started for everybody. Raises std::runtime_error, saying how to start it by hand,
  // when it is not there.
  static Server Shared(std::string_view name);

  // A server of the caller's own, stopped and removed by the destructor. `durable` gives it a production
  // server's settings for writing to disk.
  static Server StartOwn(std::string_view name, bool durable = false);

  Server(Server&& other) noexcept;
  Server& operator=(Server&&) = delete;
  ~Server();

  // A line "key=value" of the state file; raises std::runtime_error when there is none.
  std::string Setting(std::string_view key) const;

  void Halt() const;    // stops it and keeps its data
  void Kill() const;    // the same, as a crash does it
  void Resume() const;  // starts it again after one of them

 private:
  Server(std::string name, std::string stateFile, bool own);
  void Run(std::string_view action, std::string_view argument = {}) const;

  std::string name_;
  std::string stateFile_;
  bool own_;
};

}  // namespace orvane_test
