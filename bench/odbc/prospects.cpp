#include "bench/odbc/server_benches.hpp"

namespace orvane_bench {

bool IsDormantRow(std::int64_t row) {
  return row % 10 < 3;
}

void FillProspects(const BenchDatabase& database, const std::string& server, std::int64_t rows) {
  database.Execute("INSERT INTO PARAMETERS VALUES ('MAXDORMANCYTIME', '30')");
  const std::string count = std::to_string(rows);
  const std::string source = server == "postgresql" ? "generate_series(1, " + count + ") AS s (n)"
                                                    : "(SELECT seq AS n FROM seq_1_to_" + count + ") s";
  database.Execute(
      "INSERT INTO PROSPECT SELECT n, concat('customer', n, '@example.org'), concat('Firstname', n),"
      " concat('Lastname', n), concat('Example Trading Company ', n % 1000),"
      " CASE WHEN n % 10 < 3 THEN timestamp '2001-02-03 04:05:06' ELSE current_timestamp END, 0 FROM " +
      source);
  database.Analyse("PROSPECT");
}

}  // namespace orvane_bench
