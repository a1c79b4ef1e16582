// Opening, asking one thing and closing, as every small procedure of the jobs does, against the bare prepared
// query.
#include "bench/adodb/support.hpp"

int main() {
  using namespace orvane_bench;
  constexpr int kCalls = 500;  // of a round; 20 rounds in turn, and the best of each side count
  const Database database;
  database.Run(
      "CREATE TABLE PARAMETERS(PARAM_NAME VARCHAR(50) PRIMARY KEY, PARAM_VALUE VARCHAR(255));"
      "INSERT INTO PARAMETERS VALUES('MAXDORMANCYTIME','30'),('ArchiveAfter','90'),('FTPPath','')");
  const Platform platform;

  const auto bare = [&] {
    sqlite3* handle = database.Open();
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(handle, "select PARAM_VALUE from PARAMETERS where PARAM_NAME = 'ArchiveAfter'", -1,
                       &statement, nullptr);
    const StopWatch watch;
    std::size_t length = 0;
    for (int i = 0; i < kCalls; ++i) {
      if (sqlite3_step(statement) == SQLITE_ROW)
        length += static_cast<std::size_t>(sqlite3_column_bytes(statement, 0));
      sqlite3_reset(statement);
    }
    const double seconds = watch.Seconds();
    sqlite3_finalize(statement);
    sqlite3_close(handle);
    if (length != 2 * kCalls) throw std::runtime_error("wrong value");
    return seconds;
  };
  const auto platformCalls = [&] {
    const StopWatch watch;
    std::size_t length = 0;
    for (int i = 0; i < kCalls; ++i) {
      const auto connection = Connect(database);
      connection->SetIsolationLevel(ADODB::IsolationLevel::ReadCommitted);
      ADODB::Statement sql = "select PARAM_VALUE from PARAMETERS where PARAM_NAME = '";
      sql += ADODB::SqlValue("ArchiveAfter");
      sql += "'";
      const auto rows = automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
      rows->Open(sql, connection, ADODB::CursorType::ForwardOnly, ADODB::LockType::ReadOnly,
                 ADODB::kCommandText);
      if (!rows->Eof()) length += automation::ToText(rows->Value("PARAM_VALUE")).size();
      rows->Close();
      connection->Close();
    }
    if (length != 2 * kCalls) throw std::runtime_error("wrong value");
    return watch.Seconds();
  };
  const auto physicalOpens = [&] {
    const StopWatch watch;
    for (int i = 0; i < 1000; ++i) sqlite3_close(database.Open());
    return watch.Seconds() / 1000;
  };
  const auto pooledOpens = [&] {
    const StopWatch watch;
    for (int i = 0; i < kCalls; ++i) Connect(database)->Close();
    return watch.Seconds() / kCalls;
  };

  double bareBest = 1e9;
  double platformBest = 1e9;
  for (int round = 0; round < 20; ++round) {
    bareBest = std::min(bareBest, bare());
    platformBest = std::min(platformBest, platformCalls());
  }
  std::printf("one parameter read: bare prepared query %.2f us, open + query + close %.2f us, ratio %.2f\n",
              bareBest / kCalls * 1e6, platformBest / kCalls * 1e6, platformBest / bareBest);
  const double physical = physicalOpens();
  const double pooled = pooledOpens();
  std::printf("open and close: physical %.2f us, pooled %.2f us, ratio %.3f\n", physical * 1e6, pooled * 1e6,
              pooled / physical);
  return platformBest <= 2 * bareBest && pooled < physical ? 0 : 1;
}
