// Dormant user expiry against a C program that deletes the same rows by key.
//
//   bench_dormant [--only job|journal|preview] [ROWS...]
//
// 1,000,000 and 100,000 rows when none is given; 30 % of them are dormant.
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/product/bench_suite.hpp"
#include "bench/support/bench.hpp"
#include "bench/support/part.hpp"
#include "bench/support/sqlite_file.hpp"
#include "bench/support/work_folder.hpp"
#include "jobs/dormant/dormant_user_expiry.hpp"

namespace {

using namespace orvane_bench;
namespace fs = std::filesystem;

constexpr double kAllowedRatio = 1.5;
constexpr double kAllowedMebibytes = 128;
constexpr double kAllowedForTheJournal = 1.15;
constexpr double kAllowedForAPreview = 1;
constexpr double kAllowedMebibytesOfAPreview = 128;  // beyond the run's
constexpr int kRounds = 5;
// The provider's durability setting, which the peer uses too.
constexpr const char* kSynchronous = "NORMAL";

bool IsDormantRow(std::int64_t row) {
  return row % 10 < 3;
}

void Fill(const fs::path& home, std::int64_t rows) {
  MakeSuite(home);
  SqliteFile database(DatabaseOf(home));
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

void CheckUnchanged(const fs::path& database, std::int64_t rows) {
  if (SqliteFile(database).Number("SELECT count(*) FROM PROSPECT") != rows) {
    throw std::runtime_error("a preview deleted rows from " + database.string());
  }
}

// The job's part of the process: "job HOME ROWS".
void RunJob(const std::vector<std::string>& words) {
  const BenchSuite suite(words.at(0));
  Timed(std::stoll(words.at(1)), [] { OrvaneProcess::DormantUserExpiry().ExpireDormantUsers(); });
}

void Compare(Bench& bench, std::int64_t rows) {
  const WorkFolder folder;
  const fs::path original = folder.Path() / "original";
  Fill(original, rows);
  WriteKeys(folder.Path() / "keys", rows);

  const fs::path home = folder.Path() / "home";
  const auto measuredOnACopy = [&](const auto& run, const auto& check) {
    fs::copy(original, home, fs::copy_options::recursive);
    MakeSuiteConfiguration(home);
    const Measured measured = run();
    check();
    fs::remove_all(home);
    return measured;
  };
  const auto onACopy = [&](const auto& run) {
    return measuredOnACopy(run, [&] { CheckResult(DatabaseOf(home), rows); });
  };
  const Trial job{"job", Trial::Kind::Job, [&](const Build& build) {
                    return onACopy([&] { return build.Part({"job", home.string(), std::to_string(rows)}); });
                  }};
  const Trial peer{"C program", Trial::Kind::Peer, [&](const Build& build) {
                     return onACopy([&] {
                       return build.Run(
                           "peer_delete_by_key",
                           {DatabaseOf(home).string(), (folder.Path() / "keys").string(), kSynchronous});
                     });
                   }};
  const std::string name = "dormant expiry, " + std::to_string(rows) + " rows";
  const auto byHost = [&](const char* called, bool recorded) {
    return Trial{called, Trial::Kind::Peer, [&, recorded](const Build& build) {
                   return onACopy([&] { return RunByHost(build, home, "DormantUserExpiry", recorded); });
                 }};
  };
  if (bench.Wanted("journal")) {
    const Taken both = bench.Take(name + ", by the host",
                                  {byHost("recorded", true), byHost("not recorded", false)}, kRounds);
    bench.Ratio(name + ", with journal and progress to without", both.Whole("recorded"),
                both.Whole("not recorded"), AtMost(kAllowedForTheJournal));
  }
  if (bench.Wanted("preview")) {
    const Trial preview{"preview", Trial::Kind::Peer, [&](const Build& build) {
                          return measuredOnACopy(
                              [&] { return PreviewByHost(build, home, "DormantUserExpiry"); },
                              [&] { CheckUnchanged(DatabaseOf(home), rows); });
                        }};
    const Taken both = bench.Take(name + ", by the host", {preview, byHost("run", true)}, kRounds);
    bench.Ratio(name + ", preview to run", both.Whole("preview"), both.Whole("run"),
                AtMost(kAllowedForAPreview));
    bench.Limit(name + ", memory of a preview beyond the run's", "MiB",
                Beyond(both.Peak("preview"), both.Peak("run")), AtMost(kAllowedMebibytesOfAPreview));
  }
  if (!bench.Wanted("job")) return;
  const Taken taken = bench.Take(name, {job, peer}, kRounds);
  bench.Tell(name + ", job", "s", taken.Own("job"));
  bench.Ratio(name + ", job to C program", taken.Whole("job"), taken.Whole("C program"),
              AtMost(kAllowedRatio));
  bench.Limit(name + ", peak memory", "MiB", taken.Peak("job"), AtMost(kAllowedMebibytes));
}

}  // namespace

int main(int argc, char** argv) {
  return RunProgram(argc, argv, {{"job", RunJob}}, [](Bench& bench) {
    Compare(bench, bench.Size(0, 1'000'000, 20'000));
    if (bench.Size(1, 100'000, 0) > 0) Compare(bench, bench.Size(1, 100'000, 0));
  });
}
