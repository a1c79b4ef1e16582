// The deletion of many never-submitted questions as one text: its cost must grow with the number of terms, no
// faster.
#include "bench/adodb/support.hpp"

namespace {

using namespace orvane_bench;

double Delete(const Database& database, int terms) {
  database.Run(
      "DROP TABLE IF EXISTS DATAFILES; CREATE TABLE DATAFILES(ID1 INTEGER, FILENAME VARCHAR(100), FILETYPE "
      "INTEGER);"
      "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " +
      std::to_string(terms) + ") INSERT INTO DATAFILES SELECT i, 'f' || i, 1 + i % 2 * 2 FROM n");
  ADODB::Statement sql = "DELETE FROM DATAFILES WHERE ";
  for (int id = 1; id <= terms; ++id) {
    sql += " (ID1 = ";
    sql += ADODB::SqlValue(id);
    sql += " AND FILETYPE =";
    sql += "1";
    sql += ") or ";
  }
  sql.CutLast(3);
  const auto connection = Connect(database);
  const StopWatch watch;
  std::int64_t affected = 0;
  connection->Execute(sql, &affected, ADODB::kExecuteNoRecords);
  if (affected != terms / 2) throw std::runtime_error("wrong rows: " + std::to_string(affected));
  return watch.Seconds();
}

}  // namespace

int main() {
  const Database database;
  const Platform platform;
  Delete(database, 500);
  const double small = Delete(database, 5000);
  const double large = Delete(database, 50000);
  std::printf("OR chain: 5,000 terms %.3f s, 50,000 terms %.3f s, ratio %.1f\n", small, large, large / small);
  return large <= 15 * small ? 0 : 1;
}
