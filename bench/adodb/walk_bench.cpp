// A keyset cursor over many rows, and the deletion of 30 % of them on the way, against a C program that
// deletes the same keys. Usage: walk_bench [rows]
#include <vector>

#include "bench/adodb/support.hpp"

namespace {

using namespace orvane_bench;

void Fill(const Database& database, long long rows) {
  database.Run(
      "DROP TABLE IF EXISTS PROSPECT;"
      "CREATE TABLE PROSPECT(ID INTEGER PRIMARY KEY, EMAILID VARCHAR(100), FIRSTNAME VARCHAR(50), LASTNAME "
      "VARCHAR(50),"
      " COMPANY VARCHAR(50), LASTVISITEDTIME DATETIME, PENDINGQUESTIONS INTEGER);"
      "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " +
      std::to_string(rows) +
      ") INSERT INTO PROSPECT SELECT i, 'prospect' || i || '@example.com', 'First' || i, 'Last' || i,"
      " 'Some Company Limited', datetime('2004-01-01', '+' || (i % 200) || ' days'), CASE WHEN i % 10 < 3 "
      "THEN 0 ELSE 1 END"
      " FROM n; PRAGMA wal_checkpoint(TRUNCATE)");
}

double DeleteBare(const Database& database, long long rows) {
  std::vector<sqlite3_int64> keys;
  for (long long i = 1; i <= rows; ++i) {
    if (i % 10 < 3) keys.push_back(i);
  }
  sqlite3* handle = database.Open();
  sqlite3_stmt* statement = nullptr;
  sqlite3_prepare_v2(handle, "DELETE FROM PROSPECT WHERE ID = ?", -1, &statement, nullptr);
  const StopWatch watch;
  for (const sqlite3_int64 key : keys) {
    sqlite3_bind_int64(statement, 1, key);
    if (sqlite3_step(statement) != SQLITE_DONE) throw std::runtime_error(sqlite3_errmsg(handle));
    sqlite3_reset(statement);
  }
  const double seconds = watch.Seconds();
  sqlite3_finalize(statement);
  sqlite3_close(handle);
  return seconds;
}

// The whole walk; `deletes` tells whether rows go on the way.
double Walk(const Database& database, long long rows, bool deletes) {
  const StopWatch watch;
  const auto connection = Connect(database);
  const auto records = automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
  records->Open("SELECT * FROM PROSPECT", connection, ADODB::CursorType::Keyset, ADODB::LockType::Optimistic,
                -1);
  if (records->RecordCount() != rows) throw std::runtime_error("wrong count");
  long long deleted = 0;
  for (; !records->Eof(); records->MoveNext()) {
    const automation::DateTime visited = automation::ToDateTime(records->Value("LASTVISITEDTIME"));
    const bool dormant = automation::AddDays(visited, 30) < automation::DateTime::FromDate(2005, 1, 1);
    if (!dormant || automation::ToInt32(records->Value("PENDINGQUESTIONS")) > 0) continue;
    ++deleted;
    if (deletes) records->Delete(ADODB::Affect::Current);
  }
  records->Close();
  connection->Close();
  if (deleted != rows / 10 * 3) throw std::runtime_error("wrong rows: " + std::to_string(deleted));
  return watch.Seconds();
}

}  // namespace

int main(int argc, char** argv) {
  const long long rows = argc > 1 ? std::atoll(argv[1]) : 1000000;
  const Database database;
  const Platform platform;
  Fill(database, rows);
  const double memoryBefore = PeakMegabytes();
  const double walk = Walk(database, rows, false);
  std::printf("walk of %lld rows: %.2f s\n", rows, walk);
  const double ours = Walk(database, rows, true);
  const double peak = PeakMegabytes();
  Fill(database, rows);
  const double bare = DeleteBare(database, rows);
  std::printf("walk and delete 30 %%: %.2f s, bare deletes of the same keys: %.2f s, ratio %.2f\n", ours,
              bare, ours / bare);
  std::printf("peak memory: %.1f MiB (%.1f before the walk)\n", peak, memoryBefore);
  return ours <= 1.5 * bare && peak < 128 ? 0 : 1;
}
