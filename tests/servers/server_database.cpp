#include "tests/servers/server_database.hpp"

#include <fstream>
#include <memory>
#include <random>
#include <stdexcept>
#include <vector>

#include "platform/adodb/odbc/provider.hpp"

namespace orvane_test {
namespace {

std::unique_ptr<ADODB::engine::Session> ConnectTo(const std::string& text) {
  return ADODB::odbc::MakeProvider()->Connect(ADODB::engine::ConnectionString::Parse(text));
}

// Test programs run side by side, so names are drawn, not counted.
std::string NewName() {
  std::random_device device;
  std::string name = "t";
  for (int i = 0; i < 16; ++i) name += static_cast<char>('a' + device() % 26);
  return name;
}

std::string Replaced(std::string text, std::string_view from, std::string_view to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
    text.replace(at, from.size(), to);
  }
  return text;
}

}  // namespace

std::vector<std::string> StatementsOf(const std::filesystem::path& script) {
  std::ifstream file(script);
  if (!file) throw std::runtime_error("cannot read " + script.string());
  std::vector<std::string> statements;
  std::string statement;
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line.starts_with("--")) continue;
    const bool last = line.ends_with(';');
    if (last) line.pop_back();
    statement += line + "\n";
    if (last) statements.push_back(std::move(statement)), statement.clear();
  }
  if (statement.find_first_not_of(" \n") != std::string::npos) {
    throw std::runtime_error("a statement does not end in " + script.string());
  }
  return statements;
}

ServerDatabase::ServerDatabase(std::string_view server) : ServerDatabase(Server::Shared(server), server) {}

ServerDatabase::ServerDatabase(const Server& server, std::string_view name)
    : serverName_(name), serverConnection_(server.Setting("connection")), name_(NewName()) {
  ConnectTo(AdministrationString())->Execute("CREATE DATABASE " + name_, {});
}

ServerDatabase::~ServerDatabase() {
  try {
    const auto session = ConnectTo(AdministrationString());
    session->Execute("DROP DATABASE " + name_ + (serverName_ == "postgresql" ? " WITH (FORCE)" : ""), {});
    session->Execute(serverName_ == "postgresql" ? "DROP ROLE IF EXISTS " + name_ + "_jobs"
                                                 : "DROP USER IF EXISTS " + name_ + "_jobs",
                     {});
  } catch (const std::exception&) {
    // It goes with its server.
  }
}

std::string ServerDatabase::AdministrationString() const {
  return serverConnection_ + (serverName_ == "postgresql" ? ";Database=postgres" : "");
}

std::string ServerDatabase::ConnectionString() const {
  return serverConnection_ + ";Database=" + name_;
}

std::string ServerDatabase::JobsConnectionString() const {
  auto text = ADODB::engine::ConnectionString::Parse(ConnectionString());
  text.Set("UID", name_ + "_jobs");
  text.Set("PWD", "jobs-secret");
  return text.ToString();
}

void ServerDatabase::RunSchemaFile(std::string_view file) const {
  const auto session = Connect();
  for (const std::string& statement :
       StatementsOf(std::filesystem::path(ORVANE_SOURCE_DIR "/schema") / file)) {
    session->Execute(statement, {});
  }
}

void ServerDatabase::GrantJobs(std::string_view file) {
  const auto session = Connect();
  const std::string account = name_ + "_jobs";
  const bool postgresql = serverName_ == "postgresql";
  session->Execute(postgresql ? "CREATE ROLE " + account + " LOGIN PASSWORD 'jobs-secret'"
                              : "CREATE USER " + account + "@'%' IDENTIFIED BY 'jobs-secret'",
                   {});
  for (std::string statement : StatementsOf(std::filesystem::path(ORVANE_SOURCE_DIR "/schema") / file)) {
    session->Execute(Replaced(std::move(statement), "orvane_jobs", account), {});
  }
}

std::unique_ptr<ADODB::engine::Session> ServerDatabase::Connect() const {
  return ConnectTo(ConnectionString());
}

void ServerDatabase::Execute(std::string_view sql) const {
  Connect()->Execute(sql, {});
}

}  // namespace orvane_test
