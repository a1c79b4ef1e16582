// A keyset cursor over many rows, and the deletion of 30 % of them on the way, against deleting the same keys
// with the library.
//
//   adodb_walk_bench [ROWS]      1,000,000 rows unless given
#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/product/bench_suite.hpp"
#include "bench/support/bench.hpp"
#include "bench/support/part.hpp"
#include "bench/support/sqlite_file.hpp"
#include "bench/support/work_folder.hpp"
#include "platform/adodb/recordset.hpp"

namespace {

using namespace orvane_bench;
namespace fs = std::filesystem;

constexpr int kRounds = 5;
constexpr double kAllowedRatio = 1.5;
constexpr double kAllowedMebibytes = 128;

using Words = std::vector<std::string>;

void Fill(const fs::path& file, std::int64_t rows) {
  SqliteFile(file).Execute(
      "PRAGMA journal_mode = WAL;"
      "CREATE TABLE PROSPECT(ID INTEGER PRIMARY KEY, EMAILID VARCHAR(100), FIRSTNAME VARCHAR(50), LASTNAME "
      "VARCHAR(50), COMPANY VARCHAR(50), LASTVISITEDTIME DATETIME, PENDINGQUESTIONS INTEGER);"
      "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " +
      std::to_string(rows) +
      ") INSERT INTO PROSPECT SELECT i, 'prospect' || i || '@example.com', 'First' || i, 'Last' || i,"
      " 'Some Company Limited', datetime('2004-01-01', '+' || (i % 200) || ' days'), CASE WHEN i % 10 < 3 "
      "THEN 0 ELSE 1 END FROM n; PRAGMA wal_checkpoint(TRUNCATE)");
}

void DeleteBare(const Words& words) {
  const std::int64_t rows = std::stoll(words.at(1));
  SqliteFile database(words.at(0));
  database.Execute("PRAGMA synchronous = NORMAL");
  sqlite3_stmt* statement = nullptr;
  sqlite3_prepare_v2(database.Handle(), "DELETE FROM PROSPECT WHERE ID = ?", -1, &statement, nullptr);
  Timed(rows, [&] {
    for (std::int64_t key = 1; key <= rows; ++key) {
      if (key % 10 >= 3) continue;
      sqlite3_bind_int64(statement, 1, key);
      if (sqlite3_step(statement) != SQLITE_DONE) throw std::runtime_error(sqlite3_errmsg(database.Handle()));
      sqlite3_reset(statement);
    }
  });
  sqlite3_finalize(statement);
}

// "walk FILE ROWS" and "delete FILE ROWS": the whole walk, and with the rows that it deletes on the way.
void Walk(const Words& words, bool deletes) {
  const std::int64_t rows = std::stoll(words.at(1));
  const DatabaseClasses classes;
  std::int64_t deleted = 0;
  Timed(rows, [&] {
    const auto connection = Connect("Provider=SQLite;Data Source=" + words.at(0));
    const auto records = automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
    records->Open("SELECT * FROM PROSPECT", connection, ADODB::CursorType::Keyset,
                  ADODB::LockType::Optimistic, ADODB::kOptionsUnspecified);
    if (records->RecordCount() != rows) throw std::runtime_error("wrong count");
    for (; !records->Eof(); records->MoveNext()) {
      const automation::DateTime visited = automation::ToDateTime(records->Value("LASTVISITEDTIME"));
      const bool dormant = automation::AddDays(visited, 30) < automation::DateTime::FromDate(2005, 1, 1);
      if (!dormant || automation::ToInt32(records->Value("PENDINGQUESTIONS")) > 0) continue;
      ++deleted;
      if (deletes) records->Delete(ADODB::Affect::Current);
    }
    records->Close();
    connection->Close();
  });
  if (deleted != rows / 10 * 3) throw std::runtime_error("wrong rows: " + std::to_string(deleted));
}

void Measure(Bench& bench) {
  const std::int64_t rows = bench.Size(0, 1'000'000, 20'000);
  const WorkFolder folder;
  const fs::path original = folder.Path() / "original.sqlite";
  const fs::path copy = folder.Path() / "copy.sqlite";
  Fill(original, rows);
  const auto part = [&](const char* name, Trial::Kind kind, const char* verb) {
    return Trial{name, kind, [&, verb](const Build& build) {
                   fs::copy_file(original, copy);
                   const Measured measured = build.Part({verb, copy, std::to_string(rows)});
                   for (const char* end : {"", "-wal", "-shm"}) fs::remove(copy.string() + end);
                   return measured;
                 }};
  };
  const std::string name = "keyset of " + std::to_string(rows) + " rows";
  const Taken taken = bench.Take(
      name,
      {part("walk", Trial::Kind::Job, "walk"), part("walk and delete 30 %", Trial::Kind::Job, "delete"),
       part("bare deletes", Trial::Kind::Peer, "bare")},
      kRounds);
  bench.Tell(name + ", walk", "s", taken.Own("walk"));
  bench.Ratio(name + ", walk and delete 30 %, to the bare deletes", taken.Own("walk and delete 30 %"),
              taken.Own("bare deletes"), AtMost(kAllowedRatio));
  bench.Limit(name + ", peak memory", "MiB", taken.Peak("walk and delete 30 %"), AtMost(kAllowedMebibytes));
}

}  // namespace

int main(int argc, char** argv) {
  return RunProgram(argc, argv,
                    {{"walk", [](const Words& words) { Walk(words, false); }},
                     {"delete", [](const Words& words) { Walk(words, true); }},
                     {"bare", DeleteBare}},
                    Measure);
}
