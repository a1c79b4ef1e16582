// What one small read costs through its own connection, against the same query prepared once and run bare, in
// processor time.
//
//   bench_lookups [CALLS]      10,000 calls unless given
#include <cstdint>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/product/bench_suite.hpp"
#include "bench/support/bench.hpp"
#include "bench/support/part.hpp"
#include "bench/support/sqlite_file.hpp"
#include "bench/support/work_folder.hpp"
#include "common/localized_text.hpp"
#include "common/parameters.hpp"

namespace {

using namespace orvane_bench;

constexpr int kRounds = 9;
constexpr std::int64_t kCalls = 10'000;
constexpr std::int64_t kWarmingCalls = 1'000;
constexpr double kAllowedParameter = 2.0;
constexpr double kAllowedLabel = 1.5;

using Words = std::vector<std::string>;

// A query prepared once, each run with its own parameters.
class BareQuery {
 public:
  BareQuery(SqliteFile& database, const char* sql) {
    if (sqlite3_prepare_v2(database.Handle(), sql, -1, &statement_, nullptr) != SQLITE_OK) {
      throw std::runtime_error(sqlite3_errmsg(database.Handle()));
    }
  }
  ~BareQuery() { sqlite3_finalize(statement_); }
  BareQuery(const BareQuery&) = delete;
  BareQuery& operator=(const BareQuery&) = delete;

  std::string Text(const std::string& key) {
    sqlite3_bind_text(statement_, 1, key.data(), static_cast<int>(key.size()), nullptr);
    std::string text;
    if (sqlite3_step(statement_) == SQLITE_ROW) {
      text.assign(reinterpret_cast<const char*>(sqlite3_column_text(statement_, 0)),
                  static_cast<std::size_t>(sqlite3_column_bytes(statement_, 0)));
    }
    sqlite3_reset(statement_);
    return text;
  }

 private:
  sqlite3_stmt* statement_ = nullptr;
};

std::string Name(int i) {
  return "Parameter" + std::to_string(i % 100);
}
std::string Label(int i) {
  return "LBLQX" + std::to_string(1000 + i % 500);
}

void Fill(SqliteFile& database) {
  database.Execute("BEGIN");
  for (int i = 0; i < 100; ++i)
    database.Execute("INSERT INTO PARAMETERS VALUES ('" + Name(i) + "', 'value')");
  for (int i = 0; i < 500; ++i) {
    for (const char* locale : {"1033", "1031", "1043", "1041"}) {
      database.Execute("INSERT INTO I18NTEXT VALUES (" + std::string(locale) + ", '" + Label(i) +
                       "', 'Text')");
    }
  }
  database.Execute("COMMIT; PRAGMA journal_mode=WAL;");
}

void Expect(const std::string& text, const char* expected) {
  if (text != expected) throw std::runtime_error("read '" + text + "' instead of '" + expected + "'");
}

// Both parts are called with "HOME CALLS".
void Calls(const Words& words, const std::function<void(int)>& call) {
  const std::int64_t calls = std::stoll(words.at(1));
  const auto make = [&](std::int64_t count) {
    for (std::int64_t i = 0; i < count; ++i) call(static_cast<int>(i));
  };
  make(kWarmingCalls);
  TimedOnProcessor(calls, [&] { make(calls); });
}

void Product(const Words& words, const std::function<void(int)>& call) {
  const BenchSuite suite(words.at(0));
  Calls(words, call);
}

void Bare(const Words& words, const char* sql, const std::function<void(BareQuery&, int)>& call) {
  SqliteFile database(DatabaseOf(words.at(0)));
  BareQuery query(database, sql);
  Calls(words, [&](int i) { call(query, i); });
}

const Parts kParts = {
    {"parameter",
     [](const Words& words) {
       Product(words, [](int i) { Expect(OrvaneUtilities::GetParamValue(Name(i)), "value"); });
     }},
    {"label",
     [](const Words& words) {
       Product(words, [](int i) { Expect(OrvaneUtilities::GetI18NText(Label(i), 1033), "Text"); });
     }},
    {"bare-parameter",
     [](const Words& words) {
       Bare(words, "select PARAM_VALUE from PARAMETERS where PARAM_NAME = ?",
            [](BareQuery& query, int i) { Expect(query.Text(Name(i)), "value"); });
     }},
    {"bare-label",
     [](const Words& words) {
       Bare(words, "SELECT TEXT FROM I18NTEXT WHERE LOCALEID=1033 AND LABEL=?",
            [](BareQuery& query, int i) { Expect(query.Text(Label(i)), "Text"); });
     }},
};

void Measure(Bench& bench) {
  const WorkFolder folder;
  MakeSuite(folder.Path());
  SqliteFile database(DatabaseOf(folder.Path()));
  Fill(database);
  const std::string calls = std::to_string(bench.Size(0, kCalls, kCalls));
  const auto part = [&](const char* name, Trial::Kind kind, const char* verb) {
    return Trial{name, kind, [&, verb](const Build& build) {
                   return build.Part({verb, folder.Path().string(), calls});
                 }};
  };
  const std::string name = "lookups on SQLite, " + calls + " calls";
  const Taken taken = bench.Take(
      name,
      {part("GetParamValue", Trial::Kind::Job, "parameter"),
       part("bare parameter", Trial::Kind::Peer, "bare-parameter"),
       part("GetI18NText", Trial::Kind::Job, "label"), part("bare label", Trial::Kind::Peer, "bare-label")},
      kRounds);
  bench.Ratio(name + ", GetParamValue to the bare query", taken.Own("GetParamValue"),
              taken.Own("bare parameter"), AtMost(kAllowedParameter));
  bench.Ratio(name + ", GetI18NText to the bare query", taken.Own("GetI18NText"), taken.Own("bare label"),
              AtMost(kAllowedLabel));
}

}  // namespace

int main(int argc, char** argv) {
  return RunProgram(argc, argv, kParts, Measure);
}
