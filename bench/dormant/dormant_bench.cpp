// Dormant user expiry against a C program that deletes the same rows by key.
//
//   bench_dormant [ROWS...]      1,000,000 and 100,000 rows when none is given; 30 % of them are dormant
//
// Fails when the job takes more than 1.5 times as long as the peer, or holds more than 128 MiB.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "bench/support/bench_suite.hpp"
#include "bench/support/child_process.hpp"
#include "bench/support/sqlite_file.hpp"
#include "jobs/dormant/dormant_user_expiry.hpp"

namespace {

using orvane_bench::RunFigures;
using orvane_bench::SqliteFile;
namespace fs = std::filesystem;

constexpr double kAllowedRatio = 1.5;
constexpr double kAllowedMebibytes = 128;
constexpr int kRounds = 3;
// The provider's durability setting, which the peer uses too.
constexpr const char* kSynchronous = "NORMAL";

bool IsDormantRow(std::int64_t row) {
  return row % 10 < 3;
}

void Fill(const fs::path& home, std::int64_t rows) {
  orvane_bench::MakeSuite(home);
  SqliteFile database(orvane_bench::DatabaseOf(home));
  database.Execute("INSERT INTO PARAMETERS VALUES ('MAXDORMANCYTIME', '30')");
  database.Execute("BEGIN");
  sqlite3_stmt* insert = nullptr;
  sqlite3_prepare_v2(
      database.Handle(),
      "INSERT INTO PROSPECT (PROSPECTID, EMAILID, FIRSTNAME, LASTNAME, COMPANY, LASTVISITEDTIME, "
      "PENDINGQUESTIONS) VALUES (?1, 'customer' || ?1 || '@example.org', 'Firstname' || ?1, "
      "'Lastname' || ?1, 'Example Trading Company ' || (?1 % 1000), "
      "CASE ?2 WHEN 1 THEN '2001-02-03 04:05:06' ELSE datetime('now', '-1 day') END, 0)",
      -1, &insert, nullptr);
  for (std::int64_t row = 1; row <= rows; ++row) {
    sqlite3_bind_int64(insert, 1, row);
    sqlite3_bind_int(insert, 2, IsDormantRow(row) ? 1 : 0);
    if (sqlite3_step(insert) != SQLITE_DONE) throw std::runtime_error(sqlite3_errmsg(database.Handle()));
    sqlite3_reset(insert);
  }
  sqlite3_finalize(insert);
  database.Execute("COMMIT; PRAGMA journal_mode=WAL; PRAGMA wal_checkpoint(TRUNCATE);");
}

void WriteKeys(const fs::path& file, std::int64_t rows) {
  std::ofstream keys(file, std::ios::binary);
  for (std::int64_t row = 1; row <= rows; ++row) {
    if (IsDormantRow(row)) keys.write(reinterpret_cast<const char*>(&row), sizeof row);
  }
}

void CheckResult(const fs::path& database, std::int64_t rows) {
  SqliteFile file(database);
  std::int64_t kept = 0;
  for (std::int64_t row = 1; row <= rows; ++row) kept += IsDormantRow(row) ? 0 : 1;
  if (file.Number("SELECT count(*) FROM PROSPECT") != kept ||
      file.Number("SELECT count(*) FROM PROSPECT WHERE PROSPECTID % 10 < 3") != 0) {
    throw std::runtime_error("the wrong rows were deleted from " + database.string());
  }
}

int RunJob(const fs::path& home) {
  const orvane_bench::BenchSuite suite(home);
  OrvaneProcess::DormantUserExpiry().ExpireDormantUsers();
  return 0;
}

bool Compare(std::int64_t rows) {
  const orvane_bench::WorkFolder folder;
  const fs::path original = folder.Path() / "original";
  Fill(original, rows);
  WriteKeys(folder.Path() / "keys", rows);
  const fs::path programs = orvane_bench::ProgramFolder();

  RunFigures job{1e9, 0};
  RunFigures peer{1e9, 0};
  for (int round = 0; round < kRounds; ++round) {
    const fs::path home = folder.Path() / "home";
    const fs::path peerHome = folder.Path() / "peer";
    fs::copy(original, home, fs::copy_options::recursive);
    orvane_bench::MakeSuiteConfiguration(home);
    fs::copy(original, peerHome, fs::copy_options::recursive);
    const RunFigures ofPeer = orvane_bench::RunMeasured(
        programs / "peer_delete_by_key",
        {orvane_bench::DatabaseOf(peerHome).string(), (folder.Path() / "keys").string(), kSynchronous});
    const RunFigures ofJob = orvane_bench::RunMeasured(programs / "bench_dormant", {"--job", home.string()});
    CheckResult(orvane_bench::DatabaseOf(home), rows);
    CheckResult(orvane_bench::DatabaseOf(peerHome), rows);
    fs::remove_all(home);
    fs::remove_all(peerHome);
    job.seconds = std::min(job.seconds, ofJob.seconds);
    job.peakMebibytes = std::max(job.peakMebibytes, ofJob.peakMebibytes);
    peer.seconds = std::min(peer.seconds, ofPeer.seconds);
  }

  const double ratio = job.seconds / peer.seconds;
  std::printf(
      "dormant user expiry, %lld rows: job %.2f s, peer %.2f s, ratio %.2f (at most %.1f); "
      "peak memory %.1f MiB (at most %.0f)\n",
      static_cast<long long>(rows), job.seconds, peer.seconds, ratio, kAllowedRatio, job.peakMebibytes,
      kAllowedMebibytes);
  return ratio <= kAllowedRatio && job.peakMebibytes <= kAllowedMebibytes;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const std::vector<std::string_view> arguments(argv + 1, argv + argc);
    if (arguments.size() == 2 && arguments[0] == "--job") return RunJob(arguments[1]);
    std::vector<std::int64_t> sizes;
    for (const std::string_view argument : arguments) sizes.push_back(std::atoll(argument.data()));
    if (sizes.empty()) sizes = {1'000'000, 100'000};
    bool good = true;
    for (const std::int64_t rows : sizes) good = Compare(rows) && good;
    return good ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "bench_dormant: %s\n", error.what());
    return 70;
  }
}
