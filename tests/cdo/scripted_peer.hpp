// A server on loopback that says what a test wants, to one client after another.
#pragma once

#include <string>
#include <thread>
#include <vector>

namespace orvane_test {

class ScriptedPeer {
 public:
  // One script per connection: the greeting, then an answer for each line that the client sends (after "354"
  // for the whole mail). "CLOSE" closes the connection, "RESET" closes it with a reset, "SILENCE" answers
  // nothing more, "DRIP" sends lines of one answer that never ends. Further connections are closed at once.
  explicit ScriptedPeer(std::vector<std::vector<std::string>> scripts);
  ~ScriptedPeer();
  ScriptedPeer(const ScriptedPeer&) = delete;
  ScriptedPeer& operator=(const ScriptedPeer&) = delete;

  int Port() const { return port_; }
  // Ends the server and tells what the clients sent, line by line; a mail is one item.
  std::vector<std::string> Finish();

 private:
  void Serve();
  void Converse(int client, const std::vector<std::string>& script);
  void Drip(int client);

  std::vector<std::vector<std::string>> scripts_;
  std::vector<std::string> received_;
  int listener_ = -1;
  int stop_[2] = {-1, -1};
  int port_ = 0;
  std::thread thread_;
};

}  // namespace orvane_test
