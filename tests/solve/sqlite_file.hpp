// A SQLite database file with the suite's tables, filled and read past the code under test.
#pragma once

#include <sqlite3.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace orvane_test {

class SqliteFile {
 public:
  explicit SqliteFile(const std::filesystem::path& file) {
    if (sqlite3_open(file.c_str(), &handle_) != SQLITE_OK) throw std::runtime_error(sqlite3_errmsg(handle_));
    sqlite3_busy_timeout(handle_, 5000);
  }
  ~SqliteFile() { sqlite3_close(handle_); }
  SqliteFile(const SqliteFile&) = delete;
  SqliteFile& operator=(const SqliteFile&) = delete;

  void Run(const std::string& sql) {
    char* message = nullptr;
    if (sqlite3_exec(handle_, sql.c_str(), nullptr, nullptr, &message) != SQLITE_OK) {
      const std::string text = message + (": " + sql);
      sqlite3_free(message);
      throw std::runtime_error(text);
    }
  }

  void RunFile(const std::filesystem::path& file) {
    std::ifstream stream(file);
    if (!stream) throw std::runtime_error("cannot read " + file.string());
    Run(std::string(std::istreambuf_iterator<char>(stream), {}));
  }

  // One text per row: the columns with "|" between them, nulls as NULL.
  std::vector<std::string> Rows(const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(handle_, sql.c_str(), -1, &statement, nullptr) != SQLITE_OK) {
      throw std::runtime_error(std::string(sqlite3_errmsg(handle_)) + ": " + sql);
    }
    std::vector<std::string> rows;
    while (sqlite3_step(statement) == SQLITE_ROW) {
      std::string row;
      for (int i = 0; i < sqlite3_column_count(statement); ++i) {
        const auto* text = sqlite3_column_text(statement, i);
        if (i > 0) row += "|";
        row += text == nullptr ? "NULL" : reinterpret_cast<const char*>(text);
      }
      rows.push_back(row);
    }
    sqlite3_finalize(statement);
    return rows;
  }

  std::string Row(const std::string& sql) {
    const std::vector<std::string> rows = Rows(sql);
    return rows.size() == 1 ? rows.front() : std::to_string(rows.size()) + " rows";
  }

 private:
  sqlite3* handle_ = nullptr;
};

}  // namespace orvane_test
