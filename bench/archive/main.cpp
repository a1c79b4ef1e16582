// The archive job: how fast against pt-archiver moving the same rows of both tables to files, and how its
// cost and its memory grow with the requests of one customer.
//
//   bench_archive [REQUESTS [CUSTOMERS]]     100,000 requests of 1,000 customers unless given
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
constexpr double kAllowedGrowth = 1.5;
constexpr double kAllowedMemoryPerFile = 6;

void Fill(const ServerDatabase& database, const std::string& engine, HistorySize size) {
  database.RunSchemaFile(engine + ".sql");
  FillHistory(engine, size, [&](const std::string& sql) { database.Execute(sql); });
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

bool CompareWithPtArchiver(HistorySize size) {
  const Server mariadb = Server::StartOwn("mariadb", true);
  const Server postgresql = Server::StartOwn("postgresql", true);
  const double onMariaDb = JobSeconds(mariadb, "mariadb", size);
  const double onPostgreSql = JobSeconds(postgresql, "postgresql", size);
  if (!PtArchiverIsInstalled()) {
    std::printf("pt-archiver is not installed, not compared\n");
    return true;
  }
  const WorkFolder folder;
  double seconds[2] = {};
  for (const bool bulk : {false, true}) {
    const ServerDatabase database(mariadb, "mariadb");
    Fill(database, "mariadb", size);
    seconds[bulk ? 1 : 0] = PtArchiverSeconds(database, folder.Path(), bulk);
  }
  const double job = std::max(onMariaDb, onPostgreSql);
  std::printf(
      "pt-archiver: one row a transaction %.2f s, %.1f times the slower job (at least %.0f); bulk %.2f s, "
      "%.2f "
      "times (at least 1)\n",
      seconds[0], seconds[0] / job, kFasterThanSingleRows, seconds[1], seconds[1] / job);
  return seconds[0] >= kFasterThanSingleRows * job && seconds[1] >= job;
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
    bool good = orvane_bench::MeasureGrowth(requests);
    good = orvane_bench::CompareWithPtArchiver({requests, customers}) && good;
    return good ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "bench_archive: %s\n", error.what());
    return 70;
  }
}
