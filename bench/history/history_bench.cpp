// Taking a question's history apart: ten times the entries may cost at most thirteen times as long.
#include <time.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/support/bench_suite.hpp"
#include "bench/support/sqlite_file.hpp"
#include "jobs/solve/solve_on_no_response.hpp"
#include "tests/support/fake_directory.hpp"

namespace orvane_test {

class SolveOnNoResponsePeer {
 public:
  static std::size_t Separate(OrvaneProcess::SolveOnNoResponseJob& job, std::int32_t questionId) {
    std::int32_t count = 0;
    std::vector<OrvaneProcess::HistoryEntry> history;
    job.SeparateData(questionId, count, history);
    return history.size();
  }
};

}  // namespace orvane_test

namespace {

constexpr double kAllowedGrowth = 13;
constexpr int kRounds = 5;

// Posts in the wrong order, the case that a sort by neighbours takes longest for.
void AddQuestion(orvane_bench::SqliteFile& database, int id, int entries) {
  std::string posts;
  for (int i = entries; i > 0; --i) {
    char post[64];
    std::snprintf(post, sizeof post, "\x01\x02\x03\x04|2004-07-%02d %02d:%02d:%02d.%03dText of the post",
                  1 + i / 86400 % 28, i / 3600 % 24, i / 60 % 60, i % 60, i % 1000);
    posts += post;
  }
  database.Execute("INSERT INTO QUESTIONS (Q_ID, Q_ORIGINATOR, Q_TEXT, A_TEXT) VALUES (" +
                   std::to_string(id) + ", 'jdoe', '" + posts + "', '')");
}

double ProcessorSeconds() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

double Seconds(int entries) {
  OrvaneProcess::SolveOnNoResponseJob job;
  double best = 1e9;
  for (int round = 0; round < kRounds; ++round) {
    const double start = ProcessorSeconds();
    const std::size_t found = orvane_test::SolveOnNoResponsePeer::Separate(job, entries);
    best = std::min(best, ProcessorSeconds() - start);
    if (found != static_cast<std::size_t>(entries)) throw std::runtime_error("entries were lost");
  }
  return best;
}

}  // namespace

int main() {
  try {
    const orvane_bench::WorkFolder folder;
    orvane_bench::MakeSuite(folder.Path());
    const orvane_bench::BenchSuite suite(folder.Path());
    orvane_test::RegisterFakeDirectory(automation::CurrentRuntime().classes)->people["jdoe"] = {};
    orvane_bench::SqliteFile database(orvane_bench::DatabaseOf(folder.Path()));
    for (const int entries : {1000, 10'000}) AddQuestion(database, entries, entries);

    const double small = Seconds(1000);
    const double large = Seconds(10'000);
    std::printf("history of 1,000 entries %.1f ms, of 10,000 %.1f ms, %.1f times (at most %.0f)\n",
                small * 1e3, large * 1e3, large / small, kAllowedGrowth);
    return large / small <= kAllowedGrowth ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "bench_history: %s\n", error.what());
    return 70;
  }
}
