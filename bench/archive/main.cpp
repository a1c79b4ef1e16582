// The archive job: how fast against pt-archiver moving the same rows of both tables to files, and how its
// cost and its memory grow with the requests of one customer.
//
//   bench_archive [REQUESTS [CUSTOMERS [SECONDS]]]     100,000 requests of 1,000 customers unless given
//
// Moving one row a transaction ends after SECONDS (120 unless given) for each table, and its time for all
// rows is reckoned from the rows moved by then; everything else is run to its end.
//
// Fails when a target is missed.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>

#include "bench/archive/archive_bench.hpp"
#include "bench/support/bench_suite.hpp"

namespace orvane_bench {
namespace {

namespace fs = std::filesystem;
using orvane_test::Server;
using orvane_test::ServerDatabase;

constexpr double kFasterThanSingleRows = 5;
constexpr double kNotSlowerThanBulk = 1;
constexpr double kAllowedGrowth = 1.5;
constexpr double kAllowedMemoryPerFile = 6;

void Fill(const ServerDatabase& database, const std::string& engine, HistorySize size) {
  database.RunSchemaFile(engine + ".sql");
  FillHistory(engine, size, [&](const std::string& sql) { database.Execute(sql); });
  // As the servers would do by themselves in the hours between such a load and a nightly run.
  for (const std::string table : {"QUESTIONHISTORY", "TRANSACTIONS"}) {
    database.Execute(engine == "mariadb" ? "ANALYZE TABLE " + table : "VACUUM ANALYZE " + table);
  }
}

double JobSeconds(const Server& server, const std::string& engine, HistorySize size) {
  const ServerDatabase database(server, engine);
  Fill(database, engine, size);
  const WorkFolder folder;
  const fs::path home = folder.Path() / "suite" / "home";
  MakeArchiveSuite(home, database.ConnectionString(), size);
  const RunFigures figures = RunArchiveJob(home);
  const auto session = database.Connect();
  const auto rows = session->Query("select count(*) from QUESTIONHISTORY", {});
  if (!rows->Next() || automation::ToInt64(rows->Value(0)) != 0)
    throw std::runtime_error("requests were left behind");
  std::printf("%s: %lld requests of %lld customers archived in %.2f s, peak %.0f MiB\n", engine.c_str(),
              static_cast<long long>(size.requests), static_cast<long long>(size.customers), figures.seconds,
              figures.peakMebibytes);
  return figures.seconds;
}

bool CompareWithPtArchiver(HistorySize size, int longestSeconds) {
  const Server mariadb = Server::StartOwn("mariadb", true);
  const Server postgresql = Server::StartOwn("postgresql", true);
  const double onMariaDb = JobSeconds(mariadb, "mariadb", size);
  const double onPostgreSql = JobSeconds(postgresql, "postgresql", size);
  if (!PtArchiverIsInstalled()) {
    std::printf("pt-archiver is not installed, not compared\n");
    return true;
  }
  const WorkFolder folder;
  const double job = std::max(onMariaDb, onPostgreSql);
  const auto compare = [&](const char* what, PtArchiverWay way) {
    const ServerDatabase database(mariadb, "mariadb");
    Fill(database, "mariadb", size);
    const PtArchiverFigures figures = RunPtArchiver(database, folder.Path(), way);
    std::printf("pt-archiver, %s: %lld of %lld rows in %.2f s", what,
                static_cast<long long>(figures.rowsMoved), static_cast<long long>(figures.rows),
                figures.secondsMeasured);
    if (figures.rowsMoved < figures.rows) std::printf(" (cut off), %.1f s for all of them", figures.seconds);
    std::printf(": %.2f times the slower job", figures.seconds / job);
    return figures.seconds / job;
  };
  const double bulk = compare("bulk", {.bulk = true});
  std::printf(" (at least %.0f)\n", kNotSlowerThanBulk);
  compare("bulk, told to move every row", {.bulk = true, .selecting = false});
  std::printf("\n");
  const double single = compare("one row a transaction", {.longestSeconds = longestSeconds});
  std::printf(" (at least %.0f)\n", kFasterThanSingleRows);
  return single >= kFasterThanSingleRows && bulk >= kNotSlowerThanBulk;
}

// Requests of one customer: cost per request and memory, on the embedded engine.
bool MeasureGrowth(std::int64_t largest) {
  bool good = true;
  double perRequest = 0;
  for (std::int64_t requests = largest / 100; requests <= largest; requests *= 10) {
    const WorkFolder folder;
    const fs::path home = folder.Path() / "suite" / "home";
    const HistorySize size{requests, 1};
    MakeArchiveSuite(home, "Provider=SQLite;Data Source=db\\orvane.sqlite", size);
    {
      const auto session = MakeDatabase(home, "orvane.sqlite", "sqlite.sql");
      session->Begin();
      FillHistory("sqlite", size, [&](const std::string& sql) { session->Execute(sql, {}); });
      session->Commit();
    }
    const RunFigures figures = RunArchiveJob(home);
    double megabytes = 0;
    for (const auto& entry : fs::directory_iterator(home / "Data" / "Archives")) {
      megabytes = std::max(megabytes, static_cast<double>(entry.file_size()) / 1048576.0);
    }
    const double cost = figures.seconds / static_cast<double>(requests);
    if (perRequest == 0) perRequest = cost;
    std::printf(
        "one customer, %lld requests: %.2f s, %.1f us a request, %.2f times the smallest (at most %.1f); "
        "peak "
        "%.0f MiB for a file of %.1f MiB\n",
        static_cast<long long>(requests), figures.seconds, cost * 1e6, cost / perRequest, kAllowedGrowth,
        figures.peakMebibytes, megabytes);
    good = good && cost <= kAllowedGrowth * perRequest;
    // The program itself takes some 30 MiB, which says nothing about small files.
    if (megabytes > 50) good = good && figures.peakMebibytes <= kAllowedMemoryPerFile * megabytes;
  }
  return good;
}

}  // namespace
}  // namespace orvane_bench

int main(int argc, char** argv) {
  try {
    const std::int64_t requests = argc > 1 ? std::atoll(argv[1]) : 100'000;
    const std::int64_t customers = argc > 2 ? std::atoll(argv[2]) : 1'000;
    const int longestSeconds = argc > 3 ? std::atoi(argv[3]) : 120;
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    bool good = orvane_bench::CompareWithPtArchiver({requests, customers}, longestSeconds);
    good = orvane_bench::MeasureGrowth(requests) && good;
    return good ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "bench_archive: %s\n", error.what());
    return 70;
  }
}
