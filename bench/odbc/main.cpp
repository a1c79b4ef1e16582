// The jobs' work on database servers.
//
//   bench_servers [ROWS [WALKED]]     200,000 prospects to expire and 1,000,000 rows to walk unless given
//   bench_servers lookups             the localized texts alone
//
// The servers wait for the disk with each commit, as in production; the targets hold there. The same is then
// done on servers that do not, which tells how much of a deletion's time is the disk's. Fails when a target
// is missed.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

#include "bench/odbc/server_benches.hpp"

int main(int argc, char** argv) {
  using namespace orvane_bench;
  try {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() == 2 && arguments[0] == "--job") return RunDormantJob(arguments[1]);
    if (arguments.size() == 3 && arguments[0] == "--walk") return RunWalk(arguments[1], std::atoll(argv[3]));
    const bool lookupsOnly = arguments.size() == 1 && arguments[0] == "lookups";
    const std::int64_t rows = arguments.empty() ? 200'000 : std::atoll(argv[1]);
    const std::int64_t walked = arguments.size() < 2 ? 1'000'000 : std::atoll(argv[2]);
    bool good = true;
    std::setvbuf(stdout, nullptr, _IOLBF, 0);  // a run takes minutes: each figure when it is known
    for (const std::string name : {"postgresql", "mariadb"}) {
      const orvane_test::Server server = orvane_test::Server::StartOwn(name, true);
      good = CompareLookups(server, name) && good;
      if (lookupsOnly) continue;
      good = ComparePool(server, name) && good;
      good = MeasureWalk(server, name, walked) && good;
      const ExpirySeconds durable = CompareDormantExpiry(server, name, rows);
      good = durable.good && good;

      std::printf("%s without waiting for the disk (for comparison, not judged):\n", name.c_str());
      const orvane_test::Server inMemory = orvane_test::Server::StartOwn(name);
      const ExpirySeconds fast = CompareDormantExpiry(inMemory, name, rows);
      std::printf("%s: waiting for the disk is %.0f %% of the peer's time, %.0f %% of the job's\n",
                  name.c_str(), (1 - fast.peer / durable.peer) * 100, (1 - fast.job / durable.job) * 100);
    }
    return good ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "bench_servers: %s\n", error.what());
    return 70;
  }
}
