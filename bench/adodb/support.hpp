// What the programs of this folder share: a database file, a runtime, a stop-watch, the process's peak
// memory.
#pragma once

#include <sqlite3.h>
#include <stdlib.h>
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <string>

#include "platform/adodb/connection.hpp"
#include "platform/adodb/providers/sqlite/provider.hpp"
#include "platform/adodb/recordset.hpp"
#include "platform/adodb/registration.hpp"
#include "platform/automation/runtime.hpp"

namespace orvane_bench {

class Database {
 public:
  Database() {
    std::string pattern = (std::filesystem::temp_directory_path() / "orvane-bench-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
    folder_ = pattern;
    file_ = folder_ / "bench.sqlite";
    handle_ = Open();
    Run("PRAGMA journal_mode = WAL");
  }
  ~Database() {
    sqlite3_close(handle_);
    std::filesystem::remove_all(folder_);
  }
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  // A connection with the settings that the platform uses.
  sqlite3* Open() const {
    sqlite3* handle = nullptr;
    if (sqlite3_open(file_.c_str(), &handle) != SQLITE_OK)
      throw std::runtime_error("cannot open the database");
    sqlite3_busy_timeout(handle, 5000);
    Run(handle, "PRAGMA synchronous = NORMAL");
    return handle;
  }
  sqlite3* Handle() const { return handle_; }
  void Run(const std::string& sql) const { Run(handle_, sql); }
  static void Run(sqlite3* handle, const std::string& sql) {
    char* message = nullptr;
    if (sqlite3_exec(handle, sql.c_str(), nullptr, nullptr, &message) != SQLITE_OK)
      throw std::runtime_error(message);
  }
  std::string ConnectionString() const { return "Provider=SQLite;Data Source=" + file_.string(); }

 private:
  std::filesystem::path folder_;
  std::filesystem::path file_;
  sqlite3* handle_ = nullptr;
};

class Platform {
 public:
  Platform() { ADODB::RegisterClasses(runtime_.classes, {ADODB::sqlite::MakeProvider("/")}); }

 private:
  automation::Runtime runtime_;
  automation::RuntimeScope scope_{runtime_};
};

inline ADODB::ConnectionPtr Connect(const Database& database) {
  auto connection = automation::CreateObject<ADODB::Connection>("ADODB.Connection");
  connection->Open(database.ConnectionString(), "", "", -1);
  return connection;
}

class StopWatch {
 public:
  double Seconds() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
  }

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

inline double PeakMegabytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) / 1024.0;
}

}  // namespace orvane_bench
