// The jobs' work on database servers.
//
//   bench_servers [ROWS [WALKED]]     200,000 prospects to expire and 1,000,000 rows to walk unless given
//
// The servers run without waiting for the disk, which would hide what the product adds. Fails when a target
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
    const std::int64_t rows = arguments.empty() ? 200'000 : std::atoll(argv[1]);
    const std::int64_t walked = arguments.size() < 2 ? 1'000'000 : std::atoll(argv[2]);
    bool good = true;
    for (const std::string name : {"postgresql", "mariadb"}) {
      const orvane_test::Server server = orvane_test::Server::StartOwn(name, true);
      good = ComparePool(server, name) && good;
      good = MeasureWalk(server, name, walked) && good;
      good = CompareDormantExpiry(server, name, rows) && good;
    }
    return good ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "bench_servers: %s\n", error.what());
    return 70;
  }
}
