// Closed requests in bulk, and the programs that move them out of the database.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "bench/support/child_process.hpp"
#include "tests/servers/server_database.hpp"

namespace orvane_bench {

struct HistorySize {
  std::int64_t requests = 0;  // each with three transactions
  std::int64_t customers = 0;
};

// The statements that fill a suite database with such a history; `engine` is sqlite, postgresql or mariadb.
void FillHistory(const std::string& engine, HistorySize size,
                 const std::function<void(const std::string&)>& execute);

// A new embedded database of an installation, with the tables of a file of schema/.
std::unique_ptr<ADODB::engine::Session> MakeDatabase(const std::filesystem::path& home,
                                                     const std::string& file, const std::string& schema);

// An installation whose suite database is the given one; the catalogue and the directory are embedded.
void MakeArchiveSuite(const std::filesystem::path& home, const std::string& connectionString,
                      HistorySize size);

// One run of the job by orvane-host; throws when it fails.
RunFigures RunArchiveJob(const std::filesystem::path& home);

// Moves both tables to files.
struct PtArchiverWay {
  bool bulk = false;      // 1,000 rows a transaction and statement instead of one
  bool selecting = true;  // the closed requests and their transactions, as the job chooses them; or every row
  int longestSeconds = 0;  // for each table, where it is not 0: the rest is left
};
struct PtArchiverFigures {
  std::int64_t rows = 0;  // that there were
  std::int64_t rowsMoved = 0;
  double secondsMeasured = 0;
  double seconds = 0;  // for all rows: each table's time scaled by the rows that were moved of it
};
bool PtArchiverIsInstalled();
PtArchiverFigures RunPtArchiver(const orvane_test::ServerDatabase& database,
                                const std::filesystem::path& folder, PtArchiverWay way);

}  // namespace orvane_bench
