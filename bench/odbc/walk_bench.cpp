#include <stdexcept>

#include "bench/odbc/server_benches.hpp"
#include "bench/product/bench_suite.hpp"
#include "bench/support/part.hpp"
#include "platform/adodb/recordset.hpp"

namespace orvane_bench {
namespace {

constexpr double kAllowedMebibytes = 128;
constexpr int kRounds = 5;

}  // namespace

// "walk CONNECTION ROWS"
void RunWalk(const Words& words) {
  const std::int64_t rows = std::stoll(words.at(1));
  const DatabaseClasses classes;
  std::int64_t seen = 0;
  std::int64_t sum = 0;
  Timed(rows, [&] {
    const auto connection = Connect(words.at(0));
    const auto recordset = automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
    recordset->Open("SELECT * FROM PROSPECT", connection, ADODB::CursorType::Keyset,
                    ADODB::LockType::Optimistic, ADODB::kOptionsUnspecified);
    const ADODB::Field& key = recordset->Fields().Item("PROSPECTID");
    for (; !recordset->Eof(); recordset->MoveNext(), ++seen) sum += automation::ToInt64(key.Value());
    recordset->Close();
    connection->Close();
  });
  if (seen != rows || sum != rows * (rows + 1) / 2) throw std::runtime_error("the walk missed rows");
}

void MeasureWalk(Bench& bench, const BenchServer& server, std::int64_t rows) {
  const BenchDatabase database(server);
  FillProspects(database, server.Name(), rows);
  const std::string name = "keyset walk of " + std::to_string(rows) + " rows";
  const Taken taken =
      bench.Take(server.Name(),
                 {{name, Trial::Kind::Job,
                   [&](const Build& build) {
                     return build.Part({"walk", database.ConnectionString(), std::to_string(rows)});
                   }}},
                 kRounds);
  bench.Tell(server.Name() + ", " + name, "s", taken.Own(name));
  bench.Limit(server.Name() + ", " + name + ", peak memory", "MiB", taken.Peak(name),
              AtMost(kAllowedMebibytes));
}

}  // namespace orvane_bench
