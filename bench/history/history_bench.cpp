// Taking a question's history apart: ten times the entries may cost at most thirteen times as long.
//
//   bench_history [ENTRIES]      10,000 entries against a tenth of them unless given
#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/product/bench_suite.hpp"
#include "bench/product/question_history.hpp"
#include "bench/support/bench.hpp"
#include "bench/support/part.hpp"
#include "bench/support/sqlite_file.hpp"
#include "bench/support/work_folder.hpp"

namespace {

using namespace orvane_bench;

constexpr double kAllowedGrowth = 13;
constexpr int kRounds = 9;
constexpr int kWarmingQuestion = 1;
constexpr int kWarmingEntries = 100;

// Posts in the wrong order, the case that a sort by neighbours takes longest for.
void AddQuestion(SqliteFile& database, std::int64_t id, std::int64_t entries) {
  std::string posts;
  for (std::int64_t i = entries; i > 0; --i) {
    char post[64];
    const int second = static_cast<int>(i);
    std::snprintf(post, sizeof post, "\x01\x02\x03\x04|2004-07-%02d %02d:%02d:%02d.%03dText of the post",
                  1 + second / 86400 % 28, second / 3600 % 24, second / 60 % 60, second % 60, second % 1000);
    posts += post;
  }
  database.Execute("INSERT INTO QUESTIONS (Q_ID, Q_ORIGINATOR, Q_TEXT, A_TEXT) VALUES (" +
                   std::to_string(id) + ", 'jdoe', '" + posts + "', '')");
}

// "separate HOME QUESTION": a question's number is that of its entries.
void Separate(const std::vector<std::string>& words) {
  const BenchSuite suite(words.at(0));
  PutCustomerInPlaceOfDirectory();
  SeparateHistory(kWarmingQuestion);
  const std::int64_t entries = std::stoll(words.at(1));
  std::size_t found = 0;
  TimedOnProcessor(entries, [&] { found = SeparateHistory(static_cast<std::int32_t>(entries)); });
  if (found != static_cast<std::size_t>(entries)) throw std::runtime_error("entries were lost");
}

void Measure(Bench& bench) {
  const std::int64_t entries = bench.Size(0, 10'000, 2'000);
  const WorkFolder folder;
  MakeSuite(folder.Path());
  SqliteFile database(DatabaseOf(folder.Path()));
  AddQuestion(database, kWarmingQuestion, kWarmingEntries);
  const auto separation = [&](std::int64_t count) {
    AddQuestion(database, count, count);
    return Trial{std::to_string(count) + " entries", Trial::Kind::Job, [&, count](const Build& build) {
                   return build.Part({"separate", folder.Path().string(), std::to_string(count)});
                 }};
  };
  const Trial large = separation(entries);
  const Trial tenth = separation(entries / 10);
  const Taken taken = bench.Take("history", {tenth, large}, kRounds);
  bench.Tell("history, " + large.name, "s", taken.Own(large.name));
  bench.Ratio("history, " + large.name + " to a tenth", taken.Own(large.name), taken.Own(tenth.name),
              AtMost(kAllowedGrowth));
}

}  // namespace

int main(int argc, char** argv) {
  return RunProgram(argc, argv, {{"separate", Separate}}, Measure);
}
