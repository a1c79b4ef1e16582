// Closed requests in bulk, and the programs that move them out of the database.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

#include "bench/product/servers.hpp"
#include "bench/support/child_process.hpp"

namespace orvane_bench {

struct HistorySize {
  std::int64_t requests = 0;  // each with three transactions
  std::int64_t customers = 0;
};

// The statements that fill a suite database with such a history; `engine` is sqlite, postgresql or mariadb.
void FillHistory(const std::string& engine, HistorySize size,
                 const std::function<void(const std::string&)>& execute);

// An installation whose suite database is the given one; the catalogue and the directory are embedded.
void MakeArchiveSuite(const std::filesystem::path& home, const std::string& connectionString,
                      HistorySize size);
// Its suite database, when that is embedded as well.
void MakeEmbeddedHistory(const std::filesystem::path& home, HistorySize size);

// Moves the closed requests and their transactions, as the job chooses them, to files.
struct PtArchiverWay {
  bool bulk = false;       // 1,000 rows a transaction and statement instead of one
  int longestSeconds = 0;  // for each table, where it is not 0: the rest is left
};
bool PtArchiverIsInstalled();
// The time is that for all rows: each table's time scaled by the rows that were moved of it.
Measured RunPtArchiver(const BenchDatabase& database, const std::filesystem::path& folder, PtArchiverWay way);

}  // namespace orvane_bench
