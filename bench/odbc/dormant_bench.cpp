#include <algorithm>
#include <cstdio>
#include <fstream>
#include <stdexcept>

#include "bench/odbc/server_benches.hpp"
#include "bench/support/bench_suite.hpp"
#include "bench/support/child_process.hpp"
#include "jobs/dormant/dormant_user_expiry.hpp"

namespace orvane_bench {
namespace {

namespace fs = std::filesystem;

constexpr double kAllowedRatio = 1.3;
constexpr double kArchiverFactor = 3;
constexpr int kRounds = 3;
const fs::path kArchiver = "/usr/bin/pt-archiver";

void WriteKeys(const fs::path& file, std::int64_t rows) {
  std::ofstream keys(file, std::ios::binary);
  for (std::int64_t row = 1; row <= rows; ++row) {
    if (IsDormantRow(row)) keys.write(reinterpret_cast<const char*>(&row), sizeof row);
  }
}

void RequireExpired(const orvane_test::ServerDatabase& database, std::int64_t rows) {
  std::int64_t kept = 0;
  for (std::int64_t row = 1; row <= rows; ++row) kept += IsDormantRow(row) ? 0 : 1;
  if (CountOf(database, "1 = 1") != kept || CountOf(database, "PROSPECTID % 10 < 3") != 0) {
    throw std::runtime_error("the wrong rows were deleted");
  }
}

// Purge only, one row a transaction: with its ordinary options it also asks for one row at a time; `limit`
// lets it ask for more. (The last row, which it would spare for its number, goes too, as with the others.)
double ArchiverSeconds(const orvane_test::Server& server, const std::string& name, std::int64_t rows,
                       const std::string& limit) {
  const orvane_test::ServerDatabase database(server, name);
  FillProspects(database, name, rows);
  const auto text = ADODB::engine::ConnectionString::Parse(database.ConnectionString());
  const auto value = [&](const char* keyword) { return text.Value(keyword).value_or(""); };
  const RunFigures figures = RunMeasured(
      kArchiver, {"--source",
                  "h=" + value("Server") + ",P=" + value("Port") + ",u=" + value("UID") +
                      ",p=" + value("PWD") + ",A=utf8mb4,D=" + value("Database") + ",t=prospect",
                  "--purge", "--where", "LASTVISITEDTIME < '2004-01-01' AND PENDINGQUESTIONS <= 0",
                  "--txn-size", "1", "--limit", limit, "--no-safe-auto-increment", "--no-version-check"});
  RequireExpired(database, rows);
  return figures.seconds;
}

}  // namespace

int RunDormantJob(const fs::path& home) {
  const BenchSuite suite(home);
  OrvaneProcess::DormantUserExpiry().ExpireDormantUsers();
  return 0;
}

ExpirySeconds CompareDormantExpiry(const orvane_test::Server& server, const std::string& name,
                                   std::int64_t rows) {
  const WorkFolder folder;
  WriteKeys(folder.Path() / "keys", rows);
  ExpirySeconds best{.job = 1e9, .peer = 1e9};
  for (int round = 0; round < kRounds; ++round) {
    const orvane_test::ServerDatabase ofPeer(server, name);
    const orvane_test::ServerDatabase ofJob(server, name);
    FillProspects(ofPeer, name, rows);
    FillProspects(ofJob, name, rows);
    const fs::path home = folder.Path() / "home";
    MakeSuiteConfiguration(home, ofJob.ConnectionString());
    const double peer = RunMeasured(ProgramFolder() / "peer_odbc_delete_by_key",
                                    {ofPeer.ConnectionString(), (folder.Path() / "keys").string()})
                            .seconds;
    const double job = RunMeasured(ProgramFolder() / "bench_servers", {"--job", home.string()}).seconds;
    RequireExpired(ofPeer, rows);
    RequireExpired(ofJob, rows);
    best = {.job = std::min(best.job, job), .peer = std::min(best.peer, peer)};
  }
  std::printf(
      "%s: dormant user expiry, %lld rows: job %.2f s, peer %.2f s, ratio %.2f (target: at most %.1f)\n",
      name.c_str(), static_cast<long long>(rows), best.job, best.peer, best.job / best.peer, kAllowedRatio);
  best.good = best.job <= kAllowedRatio * best.peer;
  if (name != "mariadb") return best;
  if (!fs::exists(kArchiver)) {
    std::printf("%s: pt-archiver is not installed, not compared\n", name.c_str());
    return best;
  }
  const double archiver = ArchiverSeconds(server, name, rows, "1");
  std::printf("%s: pt-archiver %.2f s, %.1f times the job (target: at least %.0f), %.1f times the peer\n",
              name.c_str(), archiver, archiver / best.job, kArchiverFactor, archiver / best.peer);
  best.good = best.good && archiver >= kArchiverFactor * best.job;
  const double inBlocks = ArchiverSeconds(server, name, rows, "1000");
  std::printf("%s: pt-archiver asking for 1000 rows at a time %.2f s, %.1f times the job\n", name.c_str(),
              inBlocks, inBlocks / best.job);
  return best;
}

}  // namespace orvane_bench
