// A suite made by hand: a folder, a configuration file and databases of the test's own making.
#pragma once

#include <sqlite3.h>

#include <ctime>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/temporary_folder.hpp"

namespace orvane_test {

// In seconds.
inline constexpr long kHour = 3600;
inline constexpr long kDay = 24 * kHour;

// A SQLite database, opened without any help of the program under test.
class Database {
 public:
  explicit Database(const std::filesystem::path& file);
  ~Database();
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  // Runs a script; raises std::runtime_error with the engine's message.
  void Execute(std::string_view script);
  // The rows of a query, each as its columns joined by "|"; a null is shown as "NULL".
  std::vector<std::string> Rows(std::string_view query);

 private:
  sqlite3* database_ = nullptr;
};

// TEMP/home is the installation; the logs lie in TEMP/OrvLog.
class HandMadeSuite {
 public:
  HandMadeSuite();

  std::filesystem::path Home() const { return folder_.Path() / "home"; }
  std::filesystem::path Logs() const { return folder_.Path() / "OrvLog"; }
  const TemporaryFolder& Folder() const { return folder_; }
  std::filesystem::path DatabaseFile() const { return Home() / "db" / "orvane.sqlite"; }
  std::filesystem::path CatalogueFile() const { return Home() / "db" / "ecatalog.sqlite"; }

  // The lines of Vantrel.log without their times: "0 | source | message".
  std::vector<std::string> ErrorLog() const;
  // The whole of the job's run log, which must be one file.
  std::string RunLog(std::string_view prefix) const;

  // Makes everything the property of the unprivileged user of RunHostUnprivileged.
  void GiveAway() const;

 private:
  TemporaryFolder folder_;
};

// A moment in UTC, the time zone that the program runs in here, as the databases keep it; now moved by
// `seconds`.
std::string DateAt(std::time_t moment);
std::string DateText(long seconds);

// A log with its times, "7-26-2004 09:05:03", replaced by "<time>".
std::string WithoutTimes(const std::string& log);

}  // namespace orvane_test
