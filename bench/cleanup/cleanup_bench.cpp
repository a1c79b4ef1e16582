// The clean-up job against the shell commands that an operator would delete the same files with.
//
//   bench_cleanup [SIZE [QUESTIONS]] [--only chat|html|questions]
//
// 20,000 files and sessions, and 50,000 questions, when nothing is given.
#include <unistd.h>

#include <cstddef>
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
#include "jobs/cleanup/clean_up.hpp"

namespace {

namespace fs = std::filesystem;
using namespace orvane_bench;

// Ten times the work may take this many times as long.
constexpr double kAllowedGrowth = 12;
constexpr double kAllowedChatRatio = 2;
constexpr double kAllowedHtmlRatio = 1.5;
constexpr int kRounds = 5;

using Words = std::vector<std::string>;

Measured Shell(const fs::path& folder, const std::string& commands) {
  sync();
  return RunMeasured("/bin/sh", {"-c", "cd '" + folder.string() + "' && " + commands});
}

Measured OnASettledDisk(const Build& build, const Words& words) {
  sync();
  return build.Part(words);
}

std::int64_t Count(const fs::path& folder) {
  return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
}

void Require(bool condition, const char* what) {
  if (!condition) throw std::runtime_error(what);
}

// An installation without a web farm; the data folder is HOME/Data.
fs::path MakeHome(const fs::path& folder) {
  const fs::path home = folder / "home";
  MakeSuite(home);
  SqliteFile(DatabaseOf(home))
      .Execute(
          "INSERT INTO PARAMETERS VALUES ('DataFileRelativePath', 'Data'), ('KeepTemporaryFiles', '24')");
  fs::create_directories(home / "Data");
  return home;
}

std::string SessionName(std::int64_t number) {
  return "chat-2004-07-26-" + std::to_string(1000000 + number * 7919 % 1000000);
}

// As many folders of files as there will be runs, all made before anything is deleted: ext4 does not give out
// inodes that were deleted within the last minutes, and passes over them one by one, so that making a hundred
// thousand files after deleting as many takes longer than all the rest.
class PreparedFiles {
 public:
  PreparedFiles(const fs::path& folder, std::int64_t count, int runs) : folder_(folder) {
    for (int run = 0; run < runs; ++run) {
      const fs::path made = folder / ("prepared" + std::to_string(run));
      fs::create_directories(made);
      for (std::int64_t i = 0; i < count; ++i) std::ofstream(made / SessionName(i)) << "hello\n";
    }
  }
  fs::path Next() { return folder_ / ("prepared" + std::to_string(next_++)); }

 private:
  fs::path folder_;
  int next_ = 0;
};

// `count` files against `count` sessions, half of which have a file.
class ChatPurge {
 public:
  ChatPurge(const Bench& bench, std::int64_t count)
      : count_(count), files_(folder_.Path(), count, bench.JobRuns(kRounds) + bench.PeerRuns(kRounds)) {
    SqliteFile database(DatabaseOf(home_));
    std::ofstream list(folder_.Path() / "sessions");
    database.Execute("BEGIN");
    for (std::int64_t i = 0; i < count; ++i) {
      const std::string name = SessionName(i + count / 2);
      database.Execute("INSERT INTO CHATSESSIONS (SESSIONID) VALUES ('" + name + "')");
      list << name << '\n';
    }
    database.Execute("COMMIT");
  }

  std::string Name() const { return "chat purge of " + std::to_string(count_) + " files"; }

  Trial Job() {
    return {
        Name(), Trial::Kind::Job, [this](const Build& build) {
          const fs::path chat = home_ / "Data/CHAT";
          const fs::path prepared = files_.Next();
          fs::rename(prepared, chat);
          const Measured measured = OnASettledDisk(build, {"chat", home_.string(), std::to_string(count_)});
          Require(Count(chat) == count_ - count_ / 2, "the chat purge left the wrong files");
          fs::rename(chat, prepared);
          return measured;
        }};
  }

  Trial Peer() {
    return {Name() + " by a pipeline", Trial::Kind::Peer, [this](const Build&) {
              const fs::path prepared = files_.Next();
              const Measured measured = Shell(
                  prepared,
                  "LC_ALL=C sort ../sessions > ../sorted && find . -maxdepth 1 -type f -printf '%f\\n' | "
                  "LC_ALL=C sort | LC_ALL=C comm -23 - ../sorted | xargs rm");
              Require(Count(prepared) == count_ - count_ / 2, "the pipeline left the wrong files");
              return measured;
            }};
  }

 private:
  std::int64_t count_;
  WorkFolder folder_;
  fs::path home_ = MakeHome(folder_.Path());
  PreparedFiles files_;
};

// "chat HOME FILES"
void PurgeChat(const Words& words) {
  const BenchSuite suite(words.at(0));
  const fs::path chat = fs::path(words.at(0)) / "Data/CHAT";
  const fs::path aside = chat.string() + ".aside";
  OrvaneProcess::CleanUp job;
  job.Initialize();
  fs::rename(chat, aside);
  fs::create_directory(chat);
  job.CleanupFilesandRecords();  // the settings; finds nothing to do
  fs::remove(chat);
  fs::rename(aside, chat);
  Timed(std::stoll(words.at(1)), [&] { job.DeleteChatSession(); });
  job.Cleanupobjects();
}

// "all HOME UNITS": the whole run; its sweeps find nothing to do but what was prepared.
void CleanUpAll(const Words& words) {
  const BenchSuite suite(words.at(0));
  OrvaneProcess::CleanUp job;
  job.Initialize();
  Timed(std::stoll(words.at(1)), [&] { job.CleanupFilesandRecords(); });
  job.Cleanupobjects();
}

void MeasureChatPurge(Bench& bench, std::int64_t size) {
  ChatPurge tenth(bench, size / 10);
  ChatPurge whole(bench, size);
  const Taken taken = bench.Take("clean-up", {tenth.Job(), whole.Job(), whole.Peer()}, kRounds);
  const std::string& name = whole.Name();
  bench.Ratio(name + " to the pipeline", taken.Own(name), taken.Own(whole.Peer().name),
              AtMost(kAllowedChatRatio));
  bench.Ratio(name + " to a tenth", taken.Own(name), taken.Own(tenth.Name()), AtMost(kAllowedGrowth));
}

void MeasureHtmlSweep(Bench& bench, std::int64_t size) {
  const WorkFolder folder;
  const fs::path home = MakeHome(folder.Path());
  PreparedFiles files(folder.Path(), size, bench.JobRuns(kRounds) + bench.PeerRuns(kRounds));
  const std::string name = "HTML sweep of " + std::to_string(size) + " files";
  const Trial job{
      name, Trial::Kind::Job, [&](const Build& build) {
        const fs::path html = home / "Data/HTML";
        fs::rename(files.Next(), html);
        const Measured measured = OnASettledDisk(build, {"all", home.string(), std::to_string(size)});
        Require(Count(html) == 0, "the sweep left files");
        fs::remove(html);
        return measured;
      }};
  const Trial peer{"find -delete", Trial::Kind::Peer, [&](const Build&) {
                     const fs::path prepared = files.Next();
                     const Measured measured = Shell(prepared, "find . -maxdepth 1 -type f -delete");
                     Require(Count(prepared) == 0, "find left files");
                     return measured;
                   }};
  const Taken taken = bench.Take("clean-up", {job, peer}, kRounds);
  bench.Ratio(name + " to find -delete", taken.Own(name), taken.Own("find -delete"),
              AtMost(kAllowedHtmlRatio));
}

// Never-submitted questions without folders: two statements for all of them.
void MeasureQuestionPurge(Bench& bench, std::int64_t questions) {
  const WorkFolder folder;
  const fs::path home = MakeHome(folder.Path());
  const auto purge = [&](std::int64_t count) {
    return Trial{
        "purge of " + std::to_string(count) + " questions", Trial::Kind::Job, [&, count](const Build& build) {
          SqliteFile database(DatabaseOf(home));
          const std::string numbers =
              "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " +
              std::to_string(count) + ") ";
          database.Execute("BEGIN;" + numbers +
                           "INSERT INTO QUESTIONS (Q_ID, Q_STATUS, Q_DATE) SELECT i, 0, "
                           "'2001-02-03 04:05:06' FROM n;" +
                           numbers +
                           "INSERT INTO DATAFILES SELECT i, 'a.txt', 1, '2999-01-01 00:00:00' FROM n;"
                           "COMMIT");
          const Measured measured = OnASettledDisk(build, {"all", home.string(), std::to_string(count)});
          Require(database.Number("SELECT count(*) FROM QUESTIONS") == 0 &&
                      database.Number("SELECT count(*) FROM DATAFILES") == 0,
                  "the purge left rows");
          return measured;
        }};
  };
  const Trial many = purge(questions);
  const Trial few = purge(questions / 10);
  const Taken taken = bench.Take("clean-up", {few, many}, kRounds);
  bench.Ratio(many.name + " to a tenth", taken.Own(many.name), taken.Own(few.name), AtMost(kAllowedGrowth));
}

void Measure(Bench& bench) {
  const std::int64_t size = bench.Size(0, 20'000, 2'000);
  if (bench.Wanted("chat")) MeasureChatPurge(bench, size);
  if (bench.Wanted("html")) MeasureHtmlSweep(bench, size);
  if (bench.Wanted("questions")) MeasureQuestionPurge(bench, bench.Size(1, 50'000, 5'000));
}

}  // namespace

int main(int argc, char** argv) {
  return RunProgram(argc, argv, {{"chat", PurgeChat}, {"all", CleanUpAll}}, Measure);
}
