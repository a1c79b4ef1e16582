// The archive job: how fast against pt-archiver moving the same rows to files and against a C program with
// the same statements, files and syncs; and how its cost and its memory grow with the requests of one
// customer.
//
//   bench_archive [REQUESTS [CUSTOMERS [SECONDS [LARGEST [JOURNALED [OF]]]]]] [--only
//   servers|growth|journal|preview]
//
// 20,000 requests of 200 customers unless given; of one customer LARGEST (50,000) and a tenth of it. Moving
// one row a transaction ends after SECONDS (4) for each table, and its time for all rows is reckoned from the
// rows moved by then; everything else is run to its end. With a journal, without one, and as a preview
// JOURNALED (20,000) requests OF (200) customers are archived.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "bench/archive/archive_bench.hpp"
#include "bench/product/job_run.hpp"
#include "bench/support/bench.hpp"
#include "bench/support/part.hpp"
#include "bench/support/work_folder.hpp"

namespace orvane_bench {
namespace {

namespace fs = std::filesystem;

constexpr double kFasterThanSingleRows = 5;
constexpr double kToTheFloor = 1.5;
constexpr double kNotSlowerThanBulk = 1;
constexpr double kSlowerThanBulkOnMariaDb = 0.8;  // where the bulk mode deletes ranges of the key
constexpr double kAllowedForTheJournal = 1.15;
constexpr double kAllowedForAPreview = 1;
constexpr double kAllowedMebibytesOfAPreview = 128;  // beyond the run's
constexpr double kAllowedGrowth = 1.5;
constexpr double kAllowedMemoryPerFile = 6;
// The program itself takes some 30 MiB, which says nothing about small files.
constexpr double kSmallestFileForMemory = 20;
constexpr int kRounds = 5;

// "job HOME REQUESTS"
void RunArchive(const std::vector<std::string>& words) {
  Timed(std::stoll(words.at(1)), [&] { RunJob(words.at(0), "Archive"); });
}

double LargestArchive(const fs::path& home) {
  double mebibytes = 0;
  for (const auto& entry : fs::directory_iterator(home / "Data" / "Archives")) {
    mebibytes = std::max(mebibytes, static_cast<double>(entry.file_size()) / 1048576.0);
  }
  if (mebibytes == 0) throw std::runtime_error("nothing was archived");
  return mebibytes;
}

std::string Content(const fs::path& file) {
  std::ostringstream content;
  content << std::ifstream(file).rdbuf();
  return content.str();
}

// A hash of the names and bytes of all archive files, the times at which they were archived aside. Their
// texts are not kept: the memory that this program has counts for the peak of those that it starts.
std::size_t HashOfArchives(const fs::path& home) {
  const std::string attribute = "DateArchived=\"";
  std::map<fs::path, std::size_t> files;
  for (const auto& entry : fs::directory_iterator(home / "Data" / "Archives")) {
    std::string content = Content(entry.path());
    const std::size_t date = content.find(attribute);
    if (date != std::string::npos) content.erase(date, content.find('"', date + attribute.size()) - date);
    files[entry.path().filename()] = std::hash<std::string>()(content);
  }
  std::string all;
  for (const auto& [name, hash] : files) all += name.string() + ' ' + std::to_string(hash) + '\n';
  return std::hash<std::string>()(all);
}

// A new file of one page, from its writing to the disk's word that it is there. Three of these and a commit
// are what the disk is waited for by a new customer of the job and of the C program.
Trial Sync() {
  return {"sync", Trial::Kind::Peer, [](const Build&) {
            constexpr int kFiles = 100;
            const WorkFolder folder;
            const std::string page(4096, 'x');
            const auto start = std::chrono::steady_clock::now();
            for (int i = 0; i < kFiles; ++i) {
              const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(
                  std::fopen((folder.Path() / std::to_string(i)).c_str(), "w"), std::fclose);
              if (!file || std::fwrite(page.data(), page.size(), 1, file.get()) != 1 ||
                  std::fflush(file.get()) != 0 || fsync(fileno(file.get())) != 0)
                throw std::runtime_error("a file cannot be synced");
            }
            const std::chrono::duration<double> all = std::chrono::steady_clock::now() - start;
            return Measured{.seconds = all.count() / kFiles};
          }};
}

// A transaction that changes one row, by the server itself: the login and the messages hardly count.
Trial Commit(const BenchServer& server) {
  return {"commit on " + server.Name(), Trial::Kind::Peer, [&server](const Build&) {
            constexpr int kCommits = 1000;
            const std::string count = std::to_string(kCommits);
            const std::string change = "UPDATE PARAMETERS SET PARAM_VALUE = i WHERE PARAM_NAME = 'Commits'; ";
            const BenchDatabase database(server);
            database.Execute("INSERT INTO PARAMETERS (PARAM_NAME, PARAM_VALUE) VALUES ('Commits', '0')");
            const auto start = std::chrono::steady_clock::now();
            database.Execute(server.Name() == "mariadb"
                                 ? "BEGIN NOT ATOMIC FOR i IN 1.." + count + " DO " + change + "END FOR; END"
                                 : "DO $$ BEGIN FOR i IN 1.." + count + " LOOP " + change +
                                       "COMMIT; END LOOP; END $$");
            const std::chrono::duration<double> all = std::chrono::steady_clock::now() - start;
            if (database.Number("SELECT count(*) FROM PARAMETERS WHERE PARAM_VALUE = '" + count + "'") != 1)
              throw std::runtime_error("nothing was committed");
            return Measured{.seconds = all.count() / kCommits};
          }};
}

class ServerTrials {
 public:
  explicit ServerTrials(HistorySize size) : size_(size) {}

  // A trial on a database of its own, which must be empty afterwards.
  Trial On(const BenchServer& server, const std::string& name, Trial::Kind kind,
           std::function<Measured(const Build&, const BenchDatabase&, const fs::path& home)> run,
           bool everythingMoved = true) const {
    return {name, kind, [this, &server, run, everythingMoved](const Build& build) {
              const BenchDatabase database(server);
              const WorkFolder folder;
              const fs::path home = folder.Path() / "suite" / "home";
              MakeArchiveSuite(home, database.ConnectionString(), size_);
              const auto made = std::chrono::steady_clock::now();
              FillHistory(server.Name(), size_, [&](const std::string& sql) { database.Execute(sql); });
              for (const char* table : {"QUESTIONHISTORY", "TRANSACTIONS"}) database.Analyse(table);
              LetFilesSettle(made);
              const Measured measured = run(build, database, home);
              if (everythingMoved && database.Number("select count(*) from QUESTIONHISTORY") != 0)
                throw std::runtime_error("requests were left behind");
              return measured;
            }};
  }

  Trial Job(const BenchServer& server) {
    return On(server, server.Name(), Trial::Kind::Job,
              [this](const Build& build, const BenchDatabase&, const fs::path& home) {
                const Measured measured = build.Part({"job", home.string(), std::to_string(size_.requests)});
                RequireSameArchives(home);
                return measured;
              });
  }

  Trial Floor(const BenchServer& server) {
    return On(server, "C program on " + server.Name(), Trial::Kind::Peer,
              [this, name = server.Name()](const Build& build, const BenchDatabase& database,
                                           const fs::path& home) {
                const Measured measured =
                    build.Run("peer_archive_floor", {name, database.ConnectionString(), home.string()});
                RequireSameArchives(home);
                return measured;
              });
  }

 private:
  // The job and the C program must write the same.
  void RequireSameArchives(const fs::path& home) {
    const std::size_t archives = HashOfArchives(home);
    if (archives_ && *archives_ != archives)
      throw std::runtime_error("the job and the C program wrote other files");
    archives_ = archives;
  }

  HistorySize size_;
  std::optional<std::size_t> archives_;
};

void CompareOnServers(Bench& bench, HistorySize size, int longestSeconds) {
  const BenchServer mariadb("mariadb", true);
  const BenchServer postgresql("postgresql", true);
  ServerTrials trials(size);
  std::vector<Trial> all = {Sync()};
  for (const BenchServer* server : {&mariadb, &postgresql}) {
    all.push_back(trials.Job(*server));
    all.push_back(trials.Floor(*server));
    all.push_back(Commit(*server));
  }
  const auto archiver = [&](const std::string& name, PtArchiverWay way) {
    all.push_back(trials.On(
        mariadb, name, Trial::Kind::Peer,
        [way](const Build&, const BenchDatabase& database, const fs::path& home) {
          return RunPtArchiver(database, home, way);
        },
        way.longestSeconds == 0));
  };
  if (PtArchiverIsInstalled()) {
    archiver("pt-archiver, bulk", {.bulk = true});
    archiver("pt-archiver, one row a transaction", {.longestSeconds = longestSeconds});
  } else {
    std::printf("pt-archiver is not installed, not compared\n");
  }
  const std::string name = "archive of " + std::to_string(size.requests) + " requests of " +
                           std::to_string(size.customers) + " customers";
  const Taken taken = bench.Take(name, all, kRounds);
  const auto tellMilliseconds = [&](const std::string& what, Samples seconds) {
    for (double& sample : seconds) sample *= 1000;
    bench.Tell(name + ", a " + what, "ms", seconds);
  };
  tellMilliseconds("sync", taken.Whole("sync"));
  for (const BenchServer* server : {&mariadb, &postgresql}) {
    const std::string& job = server->Name();
    const std::string full = name + ", " + job;
    const Samples seconds = taken.Whole(job);
    bench.Tell(full, "s", seconds);
    bench.Tell(full + ", peak memory", "MiB", taken.Peak(job));
    tellMilliseconds("commit on " + job, taken.Whole("commit on " + job));
    bench.Ratio(full + ", to the C program", seconds, taken.Whole("C program on " + job),
                AtMost(kToTheFloor));
    bench.Ratio(full + ", pt-archiver in bulk to the C program", taken.Whole("pt-archiver, bulk"),
                taken.Whole("C program on " + job), std::nullopt);
    bench.Ratio(full + ", pt-archiver in bulk to it", taken.Whole("pt-archiver, bulk"), seconds,
                AtLeast(job == "mariadb" ? kSlowerThanBulkOnMariaDb : kNotSlowerThanBulk));
    bench.Ratio(full + ", pt-archiver with one row a transaction to it",
                taken.Whole("pt-archiver, one row a transaction"), seconds, AtLeast(kFasterThanSingleRows));
  }
}

// Requests of one customer on the embedded engine: the job's own time for each, and its memory.
void MeasureGrowth(Bench& bench, std::int64_t largest) {
  double mebibytes = 0;
  const auto archive = [&](std::int64_t requests) {
    return Trial{std::to_string(requests) + " requests", Trial::Kind::Job, [&, requests](const Build& build) {
                   const WorkFolder folder;
                   const fs::path home = folder.Path() / "suite" / "home";
                   const HistorySize size{requests, 1};
                   MakeArchiveSuite(home, "Provider=SQLite;Data Source=db\\orvane.sqlite", size);
                   const auto made = std::chrono::steady_clock::now();
                   MakeEmbeddedHistory(home, size);
                   LetFilesSettle(made);
                   const Measured measured = build.Part({"job", home.string(), std::to_string(requests)});
                   mebibytes = std::max(mebibytes, LargestArchive(home));
                   return measured;
                 }};
  };
  const std::string name = "archive of one customer";
  const std::vector<std::int64_t> counts = {largest / 10, largest};
  std::vector<Trial> trials;
  for (const std::int64_t count : counts) trials.push_back(archive(count));
  const Taken taken = bench.Take(name, trials, kRounds);
  const auto each = [&](std::size_t index) {
    Samples samples = taken.Own(trials[index].name);
    for (double& sample : samples) sample *= 1e6 / static_cast<double>(counts[index]);
    return samples;
  };
  bench.Tell(name + ", " + trials[1].name, "us each", each(1));
  bench.Ratio(name + ", each of " + trials[1].name + " to each of " + trials[0].name, each(1), each(0),
              AtMost(kAllowedGrowth), "us");
  Samples peak = taken.Peak(trials[1].name);
  if (mebibytes < kSmallestFileForMemory) return;
  for (double& sample : peak) sample /= mebibytes;
  bench.Limit(name + ", " + trials[1].name + ", peak memory to the file's size", "times", peak,
              AtMost(kAllowedMemoryPerFile));
}

// A trial on the embedded engine, by the host.
Trial OnSqlite(const char* called, HistorySize size,
               std::function<Measured(const Build&, const fs::path& home)> run) {
  return {called, Trial::Kind::Peer, [size, run = std::move(run)](const Build& build) {
            const WorkFolder folder;
            const fs::path home = folder.Path() / "suite" / "home";
            MakeArchiveSuite(home, "Provider=SQLite;Data Source=db\\orvane.sqlite", size);
            const auto made = std::chrono::steady_clock::now();
            MakeEmbeddedHistory(home, size);
            LetFilesSettle(made);
            return run(build, home);
          }};
}

Trial RunOnSqlite(const char* called, HistorySize size, bool recorded) {
  return OnSqlite(called, size, [recorded](const Build& build, const fs::path& home) {
    return RunByHost(build, home, "Archive", recorded);
  });
}

std::string OnSqliteName(HistorySize size) {
  return "archive of " + std::to_string(size.requests) + " requests on SQLite";
}

// What it costs that every row is written down before it goes.
void MeasureJournal(Bench& bench, HistorySize size) {
  const std::string name = OnSqliteName(size);
  const Taken taken =
      bench.Take(name + ", by the host",
                 {RunOnSqlite("recorded", size, true), RunOnSqlite("not recorded", size, false)}, kRounds);
  bench.Ratio(name + ", with journal and progress to without", taken.Whole("recorded"),
              taken.Whole("not recorded"), AtMost(kAllowedForTheJournal));
}

void MeasurePreview(Bench& bench, HistorySize size) {
  const std::string name = OnSqliteName(size);
  const Trial preview = OnSqlite("preview", size, [](const Build& build, const fs::path& home) {
    const Measured measured = PreviewByHost(build, home, "Archive");
    const fs::path archives = home / "Data" / "Archives";
    if (fs::exists(archives) && !fs::is_empty(archives))
      throw std::runtime_error("a preview wrote archive files");
    return measured;
  });
  const Taken taken = bench.Take(name + ", by the host", {preview, RunOnSqlite("run", size, true)}, kRounds);
  bench.Ratio(name + ", preview to run", taken.Whole("preview"), taken.Whole("run"),
              AtMost(kAllowedForAPreview));
  bench.Limit(name + ", memory of a preview beyond the run's", "MiB",
              Beyond(taken.Peak("preview"), taken.Peak("run")), AtMost(kAllowedMebibytesOfAPreview));
}

void Measure(Bench& bench) {
  const HistorySize size{bench.Size(0, 20'000, 1'000), bench.Size(1, 200, 20)};
  if (bench.Wanted("servers")) CompareOnServers(bench, size, static_cast<int>(bench.Size(2, 4, 4)));
  if (bench.Wanted("journal")) {
    MeasureJournal(bench, {bench.Size(4, 20'000, 1'000), bench.Size(5, 200, 20)});
  }
  if (bench.Wanted("preview")) {
    MeasurePreview(bench, {bench.Size(4, 20'000, 1'000), bench.Size(5, 200, 20)});
  }
  if (bench.Wanted("growth")) MeasureGrowth(bench, bench.Size(3, 50'000, 1'000));
}

}  // namespace
}  // namespace orvane_bench

int main(int argc, char** argv) {
  return orvane_bench::RunProgram(argc, argv, {{"job", orvane_bench::RunArchive}}, orvane_bench::Measure);
}
