#include "tests/e2e/hand_made_suite.hpp"

#include <unistd.h>

#include <ctime>
#include <regex>
#include <sstream>
#include <stdexcept>

#include "tests/e2e/host_process.hpp"

namespace orvane_test {

Database::Database(const std::filesystem::path& file) {
  std::filesystem::create_directories(file.parent_path());
  if (sqlite3_open(file.c_str(), &database_) != SQLITE_OK)
    throw std::runtime_error("cannot open " + file.string());
}

Database::~Database() {
  sqlite3_close(database_);
}

void Database::Execute(std::string_view script) {
  char* message = nullptr;
  if (sqlite3_exec(database_, std::string(script).c_str(), nullptr, nullptr, &message) != SQLITE_OK) {
    const std::string text = message != nullptr ? message : "unknown";
    sqlite3_free(message);
    throw std::runtime_error(text);
  }
}

std::vector<std::string> Database::Rows(std::string_view query) {
  sqlite3_stmt* statement = nullptr;
  if (sqlite3_prepare_v2(database_, query.data(), static_cast<int>(query.size()), &statement, nullptr) !=
      SQLITE_OK) {
    throw std::runtime_error(sqlite3_errmsg(database_));
  }
  std::vector<std::string> rows;
  while (sqlite3_step(statement) == SQLITE_ROW) {
    std::string row;
    for (int column = 0; column < sqlite3_column_count(statement); ++column) {
      if (column > 0) row += '|';
      const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
      row += text != nullptr ? text : "NULL";
    }
    rows.push_back(row);
  }
  if (sqlite3_finalize(statement) != SQLITE_OK) throw std::runtime_error(sqlite3_errmsg(database_));
  return rows;
}

HandMadeSuite::HandMadeSuite() {
  std::filesystem::permissions(folder_.Path(), std::filesystem::perms(0755));
  folder_.Write("home/config/siteConfiguration.xml", R"(<siteConfiguration>
  <product name="Orvane"><connection name="Orvane">Provider=SQLite;Data Source=db\orvane.sqlite</connection></product>
  <product name="VnServer"><connection name="ECatalog">Provider=SQLite;Data Source=db\ecatalog.sqlite</connection></product>
  <section name="COMMONPARAMETERS"><key name="DEFAULTLANGUAGE">1033</key></section>
  <section name="MEMBERSHIP">
    <key name="MemScriptUser">cn=orvane</key><key name="MemScriptCode">secret</key><key name="LDAPRoot"></key>
    <key name="LDAPServer"></key>            <!-- ldap://host:port; empty: directory.ldif -->
  </section>
  <section name="CDO">
    <key name="sendusing">1</key>
    <key name="smtpserverpickupdirectory">mail\pickup</key>
    <key name="smtpserver"></key><key name="smtpserverport">25</key>
  </section>
</siteConfiguration>
)");
  std::filesystem::create_directories(Home() / "db");
}

std::vector<std::string> HandMadeSuite::ErrorLog() const {
  std::vector<std::string> entries;
  if (!std::filesystem::exists(Logs() / "Vantrel.log")) return entries;
  std::istringstream lines(TemporaryFolder::Read(Logs() / "Vantrel.log"));
  for (std::string line; std::getline(lines, line);) {
    if (line.size() < 22 || line.substr(19, 3) != " | ") throw std::runtime_error("no entry: " + line);
    entries.push_back(line.substr(22));
  }
  return entries;
}

std::string HandMadeSuite::RunLog(std::string_view prefix) const {
  std::string found;
  int files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(Logs())) {
    const std::string name = entry.path().filename().string();
    if (name.compare(0, prefix.size(), prefix) != 0) continue;
    found = TemporaryFolder::Read(entry.path());
    ++files;
  }
  if (files != 1) throw std::runtime_error(std::to_string(files) + " run logs instead of one");
  return found;
}

void HandMadeSuite::GiveAway() const {
  if (geteuid() != 0) return;
  const auto give = [](const std::filesystem::path& path) {
    if (lchown(path.c_str(), kUnprivilegedId, kUnprivilegedId) != 0) throw std::runtime_error("chown");
  };
  give(folder_.Path());
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder_.Path())) give(entry.path());
}

std::string DateText(long seconds) {
  return DateAt(std::time(nullptr) + seconds);
}

std::string DateAt(std::time_t moment) {
  std::tm parts{};
  gmtime_r(&moment, &parts);
  char text[32];
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &parts);
  return text;
}

std::string WithoutTimes(const std::string& log) {
  static const std::regex time("[0-9]{1,2}-[0-9]{1,2}-[0-9]{4} [0-9]{2}:[0-9]{2}:[0-9]{2}");
  return std::regex_replace(log, time, "<time>");
}

}  // namespace orvane_test
