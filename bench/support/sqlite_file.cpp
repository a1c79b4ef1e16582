#include "bench/support/sqlite_file.hpp"

#include <stdexcept>

namespace orvane_bench {

SqliteFile::SqliteFile(const std::filesystem::path& file) {
  if (sqlite3_open(file.c_str(), &handle_) != SQLITE_OK)
    throw std::runtime_error("cannot open " + file.string());
}

SqliteFile::~SqliteFile() {
  sqlite3_close(handle_);
}

void SqliteFile::Execute(const std::string& sql) {
  if (sqlite3_exec(handle_, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
    throw std::runtime_error(sql.substr(0, 200) + ": " + sqlite3_errmsg(handle_));
  }
}

std::int64_t SqliteFile::Number(const std::string& sql) {
  sqlite3_stmt* statement = nullptr;
  if (sqlite3_prepare_v2(handle_, sql.c_str(), -1, &statement, nullptr) != SQLITE_OK ||
      sqlite3_step(statement) != SQLITE_ROW) {
    sqlite3_finalize(statement);
    throw std::runtime_error(sql + ": " + sqlite3_errmsg(handle_));
  }
  const std::int64_t number = sqlite3_column_int64(statement, 0);
  sqlite3_finalize(statement);
  return number;
}

}  // namespace orvane_bench
