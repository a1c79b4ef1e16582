// The clean-up job against the shell commands that an operator would delete the same files with.
//
//   bench_cleanup [SIZE [PART]]      100,000 files and sessions, and half as many questions, when none is
//   given;
//                                    PART is chat, html or questions, all of them when none is given
//
// Fails when a purge does not stay linear or takes longer than its peer allows.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>

#include "bench/support/bench_suite.hpp"
#include "bench/support/child_process.hpp"
#include "bench/support/sqlite_file.hpp"
#include "jobs/cleanup/clean_up.hpp"

namespace {

namespace fs = std::filesystem;
using orvane_bench::SqliteFile;

// Ten times the work may take this many times as long.
constexpr double kAllowedGrowth = 12;
constexpr double kAllowedChatRatio = 2;
constexpr double kAllowedHtmlRatio = 1.5;
constexpr int kRounds = 3;

double Seconds(const std::function<void()>& action) {
  const auto start = std::chrono::steady_clock::now();
  action();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void Shell(const fs::path& folder, const std::string& commands) {
  orvane_bench::RunMeasured("/bin/sh", {"-c", "cd '" + folder.string() + "' && " + commands});
}

std::size_t Count(const fs::path& folder) {
  return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

void Require(bool condition, const char* what) {
  if (!condition) throw std::runtime_error(what);
}

// An installation without a web farm; the data folder is HOME/Data.
fs::path MakeHome(const fs::path& folder) {
  const fs::path home = folder / "home";
  orvane_bench::MakeSuite(home);
  SqliteFile(orvane_bench::DatabaseOf(home))
      .Execute(
          "INSERT INTO PARAMETERS VALUES ('DataFileRelativePath', 'Data'), ('KeepTemporaryFiles', '24')");
  fs::create_directories(home / "Data");
  return home;
}

std::string SessionName(int number) {
  return "chat-2004-07-26-" + std::to_string(1000000 + number * 7919 % 1000000);
}

void MakeFiles(const fs::path& folder, int count) {
  fs::create_directories(folder);
  for (int i = 0; i < count; ++i) std::ofstream(folder / SessionName(i)) << "hello\n";
}

struct Pair {
  double job = 1e9;
  double peer = 1e9;
};

// Every round has a folder of its own for the job and one for the peer, all made before anything is deleted:
// ext4 does not give out inodes that were deleted within the last minutes, and passes over them one by one,
// so that making a hundred thousand files after deleting as many takes longer than all the rest.
std::string Prepared(const char* whose, int round) {
  return std::string(whose) + std::to_string(round);
}

void MakeFilesOfAllRounds(const fs::path& folder, int count) {
  for (int round = 0; round < kRounds; ++round) {
    MakeFiles(folder / Prepared("job", round), count);
    MakeFiles(folder / Prepared("peer", round), count);
  }
}

double SecondsOnASettledDisk(const std::function<void()>& action) {
  sync();
  return Seconds(action);
}

// `count` files against `count` sessions, half of which have a file.
class ChatPurge {
 public:
  explicit ChatPurge(int count) : count_(count) {
    SqliteFile database(orvane_bench::DatabaseOf(home_));
    std::ofstream list(folder_.Path() / "sessions");
    database.Execute("BEGIN");
    for (int i = 0; i < count; ++i) {
      const std::string name = SessionName(i + count / 2);
      database.Execute("INSERT INTO CHATSESSIONS (SESSIONID) VALUES ('" + name + "')");
      list << name << '\n';
    }
    database.Execute("COMMIT");
    MakeFilesOfAllRounds(folder_.Path(), count);
  }

  Pair Measure() const {
    Pair best;
    const fs::path chat = home_ / "Data/CHAT";
    for (int round = 0; round < kRounds; ++round) {
      {
        const orvane_bench::BenchSuite suite(home_);
        OrvaneProcess::CleanUp job;
        fs::create_directories(chat);
        job.Initialize();
        job.CleanupFilesandRecords();  // the settings
        fs::remove(chat);
        fs::rename(folder_.Path() / Prepared("job", round), chat);
        best.job = std::min(best.job, SecondsOnASettledDisk([&] { job.DeleteChatSession(); }));
        job.Cleanupobjects();
      }
      Require(Count(chat) == static_cast<std::size_t>(count_ - count_ / 2),
              "the chat purge left the wrong files");
      fs::rename(chat, folder_.Path() / Prepared("purged", round));

      const fs::path peer = folder_.Path() / Prepared("peer", round);
      best.peer =
          std::min(best.peer, SecondsOnASettledDisk([&] {
                     Shell(peer,
                           "LC_ALL=C sort ../sessions > ../sorted && find . -maxdepth 1 -type f -printf "
                           "'%f\\n' | LC_ALL=C sort | LC_ALL=C comm -23 - ../sorted | xargs rm");
                   }));
      Require(Count(peer) == static_cast<std::size_t>(count_ - count_ / 2),
              "the pipeline left the wrong files");
    }
    return best;
  }

 private:
  int count_;
  orvane_bench::WorkFolder folder_;
  fs::path home_ = MakeHome(folder_.Path());
};

class HtmlSweep {
 public:
  explicit HtmlSweep(int count) { MakeFilesOfAllRounds(folder_.Path(), count); }

  Pair Measure() const {
    Pair best;
    const fs::path html = home_ / "Data/HTML";
    for (int round = 0; round < kRounds; ++round) {
      fs::rename(folder_.Path() / Prepared("job", round), html);
      {
        const orvane_bench::BenchSuite suite(home_);
        OrvaneProcess::CleanUp job;
        job.Initialize();
        // The whole run: its other sweeps find nothing to do.
        best.job = std::min(best.job, SecondsOnASettledDisk([&] { job.CleanupFilesandRecords(); }));
        job.Cleanupobjects();
      }
      Require(Count(html) == 0, "the sweep left files");
      fs::remove(html);

      const std::string peer = Prepared("peer", round);
      best.peer = std::min(best.peer, SecondsOnASettledDisk([&] {
                             Shell(folder_.Path(), "find " + peer + " -maxdepth 1 -type f -delete");
                           }));
      Require(Count(folder_.Path() / peer) == 0, "find left files");
    }
    return best;
  }

 private:
  orvane_bench::WorkFolder folder_;
  fs::path home_ = MakeHome(folder_.Path());
};

// Never-submitted questions without folders: two statements for all of them.
double QuestionPurge(int count) {
  const orvane_bench::WorkFolder folder;
  const fs::path home = MakeHome(folder.Path());
  double best = 1e9;
  for (int round = 0; round < kRounds; ++round) {
    {
      SqliteFile database(orvane_bench::DatabaseOf(home));
      database.Execute("BEGIN");
      for (int i = 1; i <= count; ++i) {
        const std::string id = std::to_string(i);
        database.Execute("INSERT INTO QUESTIONS (Q_ID, Q_STATUS, Q_DATE) VALUES (" + id +
                         ", 0, '2001-02-03 04:05:06'); INSERT INTO DATAFILES VALUES (" + id +
                         ", 'a.txt', 1, '2999-01-01 00:00:00')");
      }
      database.Execute("COMMIT");
    }
    {
      const orvane_bench::BenchSuite suite(home);
      OrvaneProcess::CleanUp job;
      job.Initialize();
      best = std::min(best, Seconds([&] { job.CleanupFilesandRecords(); }));
      job.Cleanupobjects();
    }
    SqliteFile database(orvane_bench::DatabaseOf(home));
    Require(database.Number("SELECT count(*) FROM QUESTIONS") == 0 &&
                database.Number("SELECT count(*) FROM DATAFILES") == 0,
            "the purge left rows");
  }
  return best;
}

bool Told(const char* what, double ratio, double allowed) {
  std::printf("  %-58s %5.2f (at most %.1f)%s\n", what, ratio, allowed, ratio <= allowed ? "" : "  MISSED");
  return ratio <= allowed;
}

bool MeasureChatPurge(const ChatPurge& tenth, const ChatPurge& whole, int size) {
  const Pair small = tenth.Measure();
  const Pair large = whole.Measure();
  std::printf("chat purge, %d files against %d sessions: job %.2f s, find/sort/comm/rm %.2f s\n", size, size,
              large.job, large.peer);
  const bool fast = Told("times the pipeline", large.job / large.peer, kAllowedChatRatio);
  return Told("times the tenth of it", large.job / small.job, kAllowedGrowth) && fast;
}

bool MeasureHtmlSweep(const HtmlSweep& sweep, int size) {
  const Pair html = sweep.Measure();
  std::printf("HTML sweep, %d files: job %.2f s, find -delete %.2f s\n", size, html.job, html.peer);
  return Told("times find -delete", html.job / html.peer, kAllowedHtmlRatio);
}

bool MeasureQuestionPurge(int count) {
  const double few = QuestionPurge(count / 10);
  const double many = QuestionPurge(count);
  std::printf("purge of %d questions in one statement: %.2f s\n", count, many);
  return Told("times the tenth of it", many / few, kAllowedGrowth);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const int size = argc > 1 ? std::atoi(argv[1]) : 100'000;
    const std::string part = argc > 2 ? argv[2] : "";
    const auto wanted = [&part](const char* name) { return part.empty() || part == name; };
    std::optional<ChatPurge> tenth;
    std::optional<ChatPurge> chat;
    std::optional<HtmlSweep> html;
    if (wanted("chat")) tenth.emplace(size / 10);
    if (wanted("chat")) chat.emplace(size);
    if (wanted("html")) html.emplace(size);
    bool good = true;
    if (chat) good = MeasureChatPurge(*tenth, *chat, size) && good;
    if (html) good = MeasureHtmlSweep(*html, size) && good;
    if (wanted("questions")) good = MeasureQuestionPurge(size / 2) && good;
    return good ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "bench_cleanup: %s\n", error.what());
    return 70;
  }
}
