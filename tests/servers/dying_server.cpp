#include "tests/servers/dying_server.hpp"

#include <regex>
#include <utility>

namespace orvane_test {

std::string NameOf(const Outage& outage) {
  static const char* const kNames[] = {"Stopped", "Killed", "Restarted"};
  return (outage.server == "postgresql" ? "PostgreSQL" : "MariaDB") + std::string(kNames[outage.what]);
}

std::vector<Outage> AllOutages() {
  std::vector<Outage> all;
  for (const char* server : {"postgresql", "mariadb"}) {
    for (const auto what : {Outage::Stopped, Outage::Killed, Outage::Restarted})
      all.push_back({server, what});
  }
  return all;
}

DyingServer::DyingServer(Outage outage)
    : outage_(std::move(outage)), server_(Server::StartOwn(outage_.server)) {}

void DyingServer::Fail() {
  if (std::exchange(failed_, true)) return;
  if (outage_.what == Outage::Stopped) {
    server_.Halt();
  } else {
    server_.Kill();
  }
  if (outage_.what == Outage::Restarted) server_.Resume();
}

void DyingServer::Recover() {
  if (outage_.what != Outage::Restarted) server_.Resume();
}

std::string WithoutDriversWords(std::string message) {
  const std::string caught = " caught: ";
  const std::string number = "(-2147467259).";
  const std::string more = " Additional information: ";
  const std::size_t begin = message.find(caught);
  const std::size_t end = message.find(number);
  if (begin == std::string::npos || end == std::string::npos) return message;
  const std::size_t again = message.find(more, end);
  std::string words = message.substr(begin + caught.size(), end - begin - caught.size());
  if (again != std::string::npos) words = message.substr(again + more.size());
  if (words.ends_with(' ')) words.pop_back();  // before the number; what drivers say does not end so
  static const std::regex kLost(
      "terminating connection|server closed the connection|[Cc]ould not (send|receive)|no connection to the "
      "server|Connection was killed|server has gone away|Lost connection|link failure|Connection refused|"
      "Can't connect to server|connection lost|Connection not open");
  if (!std::regex_search(words, kLost)) return message;
  for (std::size_t at = 0; (at = message.find(words, at)) != std::string::npos;) {
    message.replace(at, words.size(), "<lost>");
  }
  return message;
}

}  // namespace orvane_test
