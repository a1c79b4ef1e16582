// A SQLite database written and read past the product, to prepare what is measured and to check what came
// out.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <filesystem>
#include <string>

namespace orvane_bench {

class SqliteFile {
 public:
  explicit SqliteFile(const std::filesystem::path& file);
  ~SqliteFile();
  SqliteFile(const SqliteFile&) = delete;
  SqliteFile& operator=(const SqliteFile&) = delete;

  void Execute(const std::string& sql);         // several statements are welcome; any failure throws
  std::int64_t Number(const std::string& sql);  // first column of the first row
  sqlite3* Handle() { return handle_; }

 private:
  sqlite3* handle_ = nullptr;
};

}  // namespace orvane_bench
