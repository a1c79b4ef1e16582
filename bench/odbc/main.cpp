// The jobs' work on database servers.
//
//   bench_servers [ROWS [WALKED [CALLS]]] [--only lookups|pool|walk|dormant|memory]
//
// 100,000 prospects to expire, 1,000,000 rows to walk and 10,000 look-ups unless given. The servers wait for
// the disk with each commit, as in production; the targets hold there. "memory" is the expiry on servers that
// do not, which tells how much of a deletion's time is the disk's.
#include "bench/odbc/server_benches.hpp"

int main(int argc, char** argv) {
  using namespace orvane_bench;
  return RunProgram(argc, argv,
                    {{"job", RunDormantJob},
                     {"pooled", OpenPooled},
                     {"physical", OpenPhysical},
                     {"lookup", LookUp},
                     {"bare-lookup", LookUpBare},
                     {"walk", RunWalk}},
                    [](Bench& bench) {
                      const std::int64_t rows = bench.Size(0, 100'000, 5'000);
                      for (const std::string name : {"postgresql", "mariadb"}) {
                        const BenchServer server(name, true);
                        if (bench.Wanted("lookups")) MeasureLookups(bench, server);
                        if (bench.Wanted("pool")) MeasurePool(bench, server);
                        if (bench.Wanted("walk"))
                          MeasureWalk(bench, server, bench.Size(1, 1'000'000, 20'000));
                        if (bench.Wanted("dormant")) MeasureDormantExpiry(bench, server, rows, true);
                        if (bench.Wanted("memory"))
                          MeasureDormantExpiry(bench, BenchServer(name, false), rows, false);
                      }
                    });
}
