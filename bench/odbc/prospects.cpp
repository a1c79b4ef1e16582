#include "bench/odbc/server_benches.hpp"

namespace orvane_bench {

bool IsDormantRow(std::int64_t row) {
  return row % 10 < 3;
}

void FillProspects(const orvane_test::ServerDatabase& database, const std::string& server,
                   std::int64_t rows) {
  database.RunSchemaFile(server + ".sql");
  database.Execute("INSERT INTO PARAMETERS VALUES ('MAXDORMANCYTIME', '30')");
  const std::string count = std::to_string(rows);
  const std::string source = server == "postgresql" ? "generate_series(1, " + count + ") AS s (n)"
                                                    : "(SELECT seq AS n FROM seq_1_to_" + count + ") s";
  database.Execute(
      "INSERT INTO PROSPECT SELECT n, concat('customer', n, '@example.org'), concat('Firstname', n),"
      " concat('Lastname', n), concat('Example Trading Company ', n % 1000),"
      " CASE WHEN n % 10 < 3 THEN timestamp '2001-02-03 04:05:06' ELSE current_timestamp END, 0 FROM " +
      source);
  database.Execute(server == "postgresql" ? "ANALYZE PROSPECT" : "ANALYZE TABLE PROSPECT");
}

std::int64_t CountOf(const orvane_test::ServerDatabase& database, const std::string& condition) {
  const auto session = database.Connect();
  const auto rows = session->Query("SELECT COUNT(*) FROM PROSPECT WHERE " + condition, {});
  return rows->Next() ? automation::ToInt64(rows->Value(0)) : -1;
}

}  // namespace orvane_bench
