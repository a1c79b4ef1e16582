#include <cstdio>
#include <stdexcept>

#include "bench/odbc/server_benches.hpp"
#include "bench/support/child_process.hpp"
#include "platform/adodb/providers/odbc/provider.hpp"
#include "platform/adodb/recordset.hpp"
#include "platform/adodb/registration.hpp"
#include "platform/automation/runtime.hpp"

namespace orvane_bench {
namespace {

constexpr double kAllowedMebibytes = 128;

}  // namespace

int RunWalk(const std::string& connectionString, std::int64_t rows) {
  automation::Runtime runtime;
  const automation::RuntimeScope scope(runtime);
  ADODB::RegisterClasses(runtime.classes, {ADODB::odbc::MakeProvider()});
  const auto connection = automation::CreateObject<ADODB::Connection>("ADODB.Connection");
  connection->Open(connectionString, "", "", -1);
  const auto recordset = automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
  recordset->Open("SELECT * FROM PROSPECT", connection, ADODB::CursorType::Keyset,
                  ADODB::LockType::Optimistic, -1);
  const ADODB::Field& key = recordset->Fields().Item("PROSPECTID");
  std::int64_t seen = 0;
  std::int64_t sum = 0;
  for (; !recordset->Eof(); recordset->MoveNext(), ++seen) sum += automation::ToInt64(key.Value());
  recordset->Close();
  connection->Close();
  if (seen != rows || sum != rows * (rows + 1) / 2) throw std::runtime_error("the walk missed rows");
  return 0;
}

bool MeasureWalk(const orvane_test::Server& server, const std::string& name, std::int64_t rows) {
  const orvane_test::ServerDatabase database(server, name);
  FillProspects(database, name, rows);
  const RunFigures figures = RunMeasured(ProgramFolder() / "bench_servers",
                                         {"--walk", database.ConnectionString(), std::to_string(rows)});
  std::printf("%s: keyset walk, %lld rows: %.2f s, peak memory %.1f MiB (less than %.0f)\n", name.c_str(),
              static_cast<long long>(rows), figures.seconds, figures.peakMebibytes, kAllowedMebibytes);
  return figures.peakMebibytes < kAllowedMebibytes;
}

}  // namespace orvane_bench
