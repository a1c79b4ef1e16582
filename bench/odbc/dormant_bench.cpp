#include <cstdio>
#include <filesystem>
#include <fstream>
#include <optional>
#include <stdexcept>

#include "bench/odbc/server_benches.hpp"
#include "bench/product/bench_suite.hpp"
#include "bench/support/part.hpp"
#include "bench/support/work_folder.hpp"
#include "jobs/dormant/dormant_user_expiry.hpp"

namespace orvane_bench {
namespace {

namespace fs = std::filesystem;

constexpr double kAllowedForTheJournal = 1.05;
constexpr double kAllowedForAPreview = 1.5;
constexpr double kAllowedMebibytesOfAPreview = 128;  // beyond the run's
constexpr double kAllowedRatio = 1.3;
constexpr double kArchiverFactor = 3;
constexpr int kRounds = 5;
const fs::path kArchiver = "/usr/bin/pt-archiver";

void WriteKeys(const fs::path& file, std::int64_t rows) {
  std::ofstream keys(file, std::ios::binary);
  for (std::int64_t row = 1; row <= rows; ++row) {
    if (IsDormantRow(row)) keys.write(reinterpret_cast<const char*>(&row), sizeof row);
  }
}

void RequireExpired(const BenchDatabase& database, std::int64_t rows) {
  std::int64_t kept = 0;
  for (std::int64_t row = 1; row <= rows; ++row) kept += IsDormantRow(row) ? 0 : 1;
  if (database.Number("SELECT COUNT(*) FROM PROSPECT") != kept ||
      database.Number("SELECT COUNT(*) FROM PROSPECT WHERE PROSPECTID % 10 < 3") != 0) {
    throw std::runtime_error("the wrong rows were deleted");
  }
}

void RequireUnchanged(const BenchDatabase& database, std::int64_t rows) {
  if (database.Number("SELECT COUNT(*) FROM PROSPECT") != rows) {
    throw std::runtime_error("a preview deleted rows");
  }
}

// Purge only, one row a transaction: with its ordinary options it also asks for one row at a time; `limit`
// lets it ask for more. (The last row, which it would spare for its number, goes too, as with the others.)
Measured RunArchiver(const BenchDatabase& database, const std::string& limit) {
  return RunMeasured(kArchiver,
                     {"--source",
                      "h=" + database.Setting("Server") + ",P=" + database.Setting("Port") +
                          ",u=" + database.Setting("UID") + ",p=" + database.Setting("PWD") +
                          ",A=utf8mb4,D=" + database.Setting("Database") + ",t=prospect",
                      "--purge", "--where", "LASTVISITEDTIME < '2004-01-01' AND PENDINGQUESTIONS <= 0",
                      "--txn-size", "1", "--limit", limit, "--no-safe-auto-increment", "--no-version-check"});
}

}  // namespace

// "job HOME ROWS"
void RunDormantJob(const Words& words) {
  const BenchSuite suite(words.at(0));
  Timed(std::stoll(words.at(1)), [] { OrvaneProcess::DormantUserExpiry().ExpireDormantUsers(); });
}

void MeasureDormantExpiry(Bench& bench, const BenchServer& server, std::int64_t rows, bool durable) {
  const WorkFolder folder;
  const fs::path keys = folder.Path() / "keys";
  const fs::path home = folder.Path() / "home";
  WriteKeys(keys, rows);
  const auto measuredOnANewDatabase = [&](const auto& run, const auto& check) {
    const BenchDatabase database(server);
    FillProspects(database, server.Name(), rows);
    const Measured measured = run(database);
    check(database);
    return measured;
  };
  const auto onANewDatabase = [&](const auto& run) {
    return measuredOnANewDatabase(run,
                                  [&](const BenchDatabase& database) { RequireExpired(database, rows); });
  };
  const std::string name = "dormant expiry of " + std::to_string(rows) + " rows" +
                           (durable ? "" : " without waiting for the disk");
  std::vector<Trial> trials = {
      {name, Trial::Kind::Job,
       [&](const Build& build) {
         return onANewDatabase([&](const BenchDatabase& database) {
           MakeSuiteConfiguration(home, database.ConnectionString());
           return build.Part({"job", home.string(), std::to_string(rows)});
         });
       }},
      {"C program", Trial::Kind::Peer, [&](const Build& build) {
         return onANewDatabase([&](const BenchDatabase& database) {
           return build.Run("peer_odbc_delete_by_key", {database.ConnectionString(), keys.string()});
         });
       }}};
  const bool archiver = durable && server.Name() == "mariadb" && fs::exists(kArchiver);
  if (durable && server.Name() == "mariadb" && !archiver)
    std::printf("pt-archiver is not installed, not compared\n");
  if (archiver) {
    for (const char* limit : {"1", "1000"}) {
      trials.push_back(
          {std::string("pt-archiver --limit ") + limit, Trial::Kind::Peer, [&, limit](const Build&) {
             return onANewDatabase(
                 [&](const BenchDatabase& database) { return RunArchiver(database, limit); });
           }});
    }
  }
  const auto byHost = [&](const char* called, bool recorded) {
    return Trial{called, Trial::Kind::Peer, [&, recorded](const Build& build) {
                   return onANewDatabase([&](const BenchDatabase& database) {
                     MakeSuiteConfiguration(home, database.ConnectionString());
                     return RunByHost(build, home, "DormantUserExpiry", recorded);
                   });
                 }};
  };
  trials.push_back(byHost("by the host, recorded", true));
  trials.push_back(byHost("by the host, not recorded", false));
  trials.push_back({"preview by the host", Trial::Kind::Peer, [&](const Build& build) {
                      return measuredOnANewDatabase(
                          [&](const BenchDatabase& database) {
                            MakeSuiteConfiguration(home, database.ConnectionString());
                            return PreviewByHost(build, home, "DormantUserExpiry");
                          },
                          [&](const BenchDatabase& database) { RequireUnchanged(database, rows); });
                    }});
  const Taken taken = bench.Take(server.Name(), trials, kRounds);
  const std::string full = server.Name() + ", " + name;
  const auto judged = [durable](Target target) { return durable ? std::optional(target) : std::nullopt; };
  bench.Tell(full, "s", taken.Own(name));
  bench.Ratio(full + ", to the C program", taken.Whole(name), taken.Whole("C program"),
              judged(AtMost(kAllowedRatio)));
  bench.Ratio(full + ", with journal and progress to without", taken.Whole("by the host, recorded"),
              taken.Whole("by the host, not recorded"), judged(AtMost(kAllowedForTheJournal)));
  bench.Ratio(full + ", preview to run", taken.Whole("preview by the host"),
              taken.Whole("by the host, recorded"), judged(AtMost(kAllowedForAPreview)));
  bench.Limit(full + ", memory of a preview beyond the run's", "MiB",
              Beyond(taken.Peak("preview by the host"), taken.Peak("by the host, recorded")),
              AtMost(kAllowedMebibytesOfAPreview));
  bench.Ratio(full + ", pt-archiver --limit 1 to it", taken.Whole("pt-archiver --limit 1"), taken.Whole(name),
              AtLeast(kArchiverFactor));
  bench.Ratio(full + ", pt-archiver --limit 1000 to it", taken.Whole("pt-archiver --limit 1000"),
              taken.Whole(name), std::nullopt);
}

}  // namespace orvane_bench
