#include "bench/odbc/server_benches.hpp"
#include "bench/product/bench_suite.hpp"
#include "bench/support/part.hpp"

namespace orvane_bench {
namespace {

constexpr double kAllowedShare = 0.01;
constexpr int kRounds = 5;
constexpr std::int64_t kPhysical = 100;
constexpr std::int64_t kPooled = 20'000;

Samples Each(Samples seconds, std::int64_t calls) {
  for (double& sample : seconds) sample *= 1e6 / static_cast<double>(calls);
  return seconds;
}

}  // namespace

// "pooled CONNECTION": what a procedure of a job does around its work.
void OpenPooled(const Words& words) {
  const DatabaseClasses classes;
  const auto open = [&] {
    const auto connection = Connect(words.at(0));
    connection->SetIsolationLevel(ADODB::IsolationLevel::ReadCommitted);
    connection->Close();
  };
  open();  // the physical connection
  Timed(kPooled, [&] {
    for (std::int64_t i = 0; i < kPooled; ++i) open();
  });
}

// "physical CONNECTION"
void OpenPhysical(const Words& words) {
  OpenPhysicalConnection(words.at(0));  // loads the driver
  Timed(kPhysical, [&] {
    for (std::int64_t i = 0; i < kPhysical; ++i) OpenPhysicalConnection(words.at(0));
  });
}

void MeasurePool(Bench& bench, const BenchServer& server) {
  const BenchDatabase database(server);
  const std::string connection = database.ConnectionString();
  const Taken taken = bench.Take(server.Name(),
                                 {{"open and close, pooled", Trial::Kind::Job,
                                   [&](const Build& build) {
                                     return build.Part({"pooled", connection});
                                   }},
                                  {"physical", Trial::Kind::Peer,
                                   [&](const Build& build) {
                                     return build.Part({"physical", connection});
                                   }}},
                                 kRounds);
  bench.Ratio(server.Name() + ", open and close, pooled to physical",
              Each(taken.Own("open and close, pooled"), kPooled), Each(taken.Own("physical"), kPhysical),
              AtMost(kAllowedShare), "us");
}

}  // namespace orvane_bench
