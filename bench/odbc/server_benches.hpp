// The benchmarks on database servers. Each prints its figures and says whether they are within its target.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "tests/servers/server_database.hpp"

namespace orvane_bench {

// A database with the suite's tables and `rows` prospects, of whom 30 % are dormant at a limit of 30 days.
void FillProspects(const orvane_test::ServerDatabase& database, const std::string& server, std::int64_t rows);
bool IsDormantRow(std::int64_t row);
std::int64_t CountOf(const orvane_test::ServerDatabase& database, const std::string& condition);

// The job against a C program that sends the same single-row deletes over the same driver, and, on MariaDB,
// against pt-archiver where it is installed. `good` when it is within its targets.
struct ExpirySeconds {
  double job = 0;
  double peer = 0;
  bool good = false;
};
ExpirySeconds CompareDormantExpiry(const orvane_test::Server& server, const std::string& name,
                                   std::int64_t rows);
// One run of the job in the installation at `home`.
int RunDormantJob(const std::filesystem::path& home);

// Opening and closing a connection through the pool against opening and closing a physical one.
bool ComparePool(const orvane_test::Server& server, const std::string& name);

// A localized text through a connection of its own against the bare prepared query.
bool CompareLookups(const orvane_test::Server& server, const std::string& name);

// The memory of a walk through a keyset cursor.
bool MeasureWalk(const orvane_test::Server& server, const std::string& name, std::int64_t rows);
int RunWalk(const std::string& connectionString, std::int64_t rows);

}  // namespace orvane_bench
