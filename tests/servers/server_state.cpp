#include "tests/servers/server_state.hpp"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <utility>

namespace orvane_test {
namespace {

std::string SharedStateFile(std::string_view name) {
  return std::string(ORVANE_SERVERS_DIR) + "/" + std::string(name) + ".server";
}

std::string Script(std::string_view name) {
  return std::string(ORVANE_SOURCE_DIR) + "/tests/servers/" + std::string(name) + ".sh";
}

}  // namespace

Server Server::Shared(std::string_view name) {
  std::string state = SharedStateFile(name);
  if (!std::filesystem::exists(state)) {
    throw std::runtime_error("no " + std::string(name) +
                             " server for the tests; run them through ctest, or start it: " + Script(name) +
                             " start " + state);
  }
  return Server(std::string(name), std::move(state), false);
}

Server Server::StartOwn(std::string_view name, bool durable) {
  std::string pattern = std::filesystem::temp_directory_path() / "orvane-own-server.XXXXXX";
  if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("cannot make " + pattern);
  Server server(std::string(name), pattern + "/" + std::string(name) + ".server", true);
  server.Run("start", durable ? "durable" : "");
  return server;
}

Server::Server(std::string name, std::string stateFile, bool own)
    : name_(std::move(name)), stateFile_(std::move(stateFile)), own_(own) {}

Server::Server(Server&& other) noexcept
    : name_(std::move(other.name_)),
      stateFile_(std::move(other.stateFile_)),
      own_(std::exchange(other.own_, false)) {}

Server::~Server() {
  if (!own_) return;
  try {
    Run("stop");
  } catch (const std::exception&) {
    // The script has told why on standard error; a server left behind ends by its own time limit.
  }
  std::error_code ignored;
  std::filesystem::remove_all(std::filesystem::path(stateFile_).parent_path(), ignored);
}

std::string Server::Setting(std::string_view key) const {
  std::ifstream file(stateFile_);
  const std::string start = std::string(key) + "=";
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with(start)) return line.substr(start.size());
  }
  throw std::runtime_error("no \"" + std::string(key) + "\" in " + stateFile_);
}

void Server::Halt() const {
  Run("halt");
}
void Server::Kill() const {
  Run("kill");
}
void Server::Resume() const {
  Run("resume");
}

void Server::Run(std::string_view action, std::string_view argument) const {
  // What is made of each kind of server before it first starts is the same for all of them.
  const std::string command = "ORVANE_SERVER_TEMPLATES='" ORVANE_SERVERS_DIR "/templates' '" + Script(name_) +
                              "' " + std::string(action) + " '" + stateFile_ + "'" +
                              (argument.empty() ? "" : " " + std::string(argument));
  if (std::system(command.c_str()) != 0) throw std::runtime_error("failed: " + command);
}

}  // namespace orvane_test
