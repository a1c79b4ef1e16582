// What one small read costs through its own connection, against the same query prepared once and run bare.
//
// Processor time a call, the best of several rounds. GetParamValue: at most twice the bare query;
// GetI18NText: at most 1.5 times.
#include <time.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <functional>
#include <stdexcept>
#include <string>

#include "bench/support/bench_suite.hpp"
#include "bench/support/sqlite_file.hpp"
#include "common/localized_text.hpp"
#include "common/parameters.hpp"

namespace {

using orvane_bench::SqliteFile;

constexpr int kCalls = 10'000;
constexpr int kRounds = 9;

struct Compared {
  double product = 1e9;  // microseconds a call
  double bare = 1e9;
};

// Processor time: nothing here waits, and what else the machine does is not to count.
double ProcessorMicroseconds() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) / 1e3;
}

double MicrosecondsACall(const std::function<void(int)>& call) {
  const double start = ProcessorMicroseconds();
  for (int i = 0; i < kCalls; ++i) call(i);
  return (ProcessorMicroseconds() - start) / kCalls;
}

// The two take turns, so that a busy machine slows down both.
Compared Compare(const std::function<void(int)>& product, const std::function<void(int)>& bare) {
  Compared best;
  for (int round = 0; round < kRounds; ++round) {
    best.bare = std::min(best.bare, MicrosecondsACall(bare));
    best.product = std::min(best.product, MicrosecondsACall(product));
  }
  return best;
}

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

bool Report(const char* what, const Compared& figures, double allowed) {
  const double ratio = figures.product / figures.bare;
  std::printf("%s: %.2f us a call, bare prepared query %.2f us, ratio %.2f (at most %.1f)\n", what,
              figures.product, figures.bare, ratio, allowed);
  return ratio <= allowed;
}

}  // namespace

int main() {
  try {
    const orvane_bench::WorkFolder folder;
    orvane_bench::MakeSuite(folder.Path());
    SqliteFile database(orvane_bench::DatabaseOf(folder.Path()));
    Fill(database);
    const orvane_bench::BenchSuite suite(folder.Path());

    BareQuery parameter(database, "select PARAM_VALUE from PARAMETERS where PARAM_NAME = ?");
    bool good = Report("GetParamValue",
                       Compare([](int i) { Expect(OrvaneUtilities::GetParamValue(Name(i)), "value"); },
                               [&](int i) { Expect(parameter.Text(Name(i)), "value"); }),
                       2.0);
    BareQuery label(database, "SELECT TEXT FROM I18NTEXT WHERE LOCALEID=1033 AND LABEL=?");
    good = Report("GetI18NText",
                  Compare([](int i) { Expect(OrvaneUtilities::GetI18NText(Label(i), 1033), "Text"); },
                          [&](int i) { Expect(label.Text(Label(i)), "Text"); }),
                  1.5) &&
           good;
    return good ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "bench_lookups: %s\n", error.what());
    return 70;
  }
}
