#include <chrono>
#include <cstdio>

#include "bench/odbc/server_benches.hpp"
#include "platform/adodb/connection.hpp"
#include "platform/adodb/providers/odbc/provider.hpp"
#include "platform/adodb/registration.hpp"
#include "platform/automation/runtime.hpp"

namespace orvane_bench {
namespace {

constexpr double kAllowedShare = 0.01;
constexpr int kPhysical = 200;
constexpr int kPooled = 50'000;

template <class Action>
double SecondsEach(int count, Action action) {
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < count; ++i) action();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() / count;
}

}  // namespace

bool ComparePool(const orvane_test::Server& server, const std::string& name) {
  const orvane_test::ServerDatabase database(server, name);
  const std::string text = database.ConnectionString();
  const auto provider = ADODB::odbc::MakeProvider();
  const auto parsed = ADODB::engine::ConnectionString::Parse(text);
  const double physical = SecondsEach(kPhysical, [&] { provider->Connect(parsed); });

  automation::Runtime runtime;
  const automation::RuntimeScope scope(runtime);
  ADODB::RegisterClasses(runtime.classes, {provider});
  // What a procedure of a job does around its work.
  const double pooled = SecondsEach(kPooled, [&] {
    const auto connection = automation::CreateObject<ADODB::Connection>("ADODB.Connection");
    connection->Open(text, "", "", -1);
    connection->SetIsolationLevel(ADODB::IsolationLevel::ReadCommitted);
    connection->Close();
  });
  const double share = pooled / physical;
  std::printf("%s: open and close: physical %.1f us, pooled %.2f us, %.2f %% (less than %.0f %%)\n",
              name.c_str(), physical * 1e6, pooled * 1e6, share * 100, kAllowedShare * 100);
  return share < kAllowedShare;
}

}  // namespace orvane_bench
