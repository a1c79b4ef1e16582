#include "platform/adodb/engines/postgresql/failures.hpp"

namespace ADODB::engine {
namespace {

// The server goes down, has crashed, or is not yet up.
bool LosesSession(std::string_view sqlState, std::int32_t) {
  return sqlState == "57P01" || sqlState == "57P02" || sqlState == "57P03";
}

// The columns of a result have changed since the statement was prepared. A transaction is over then.
bool NeedsPreparingAnew(std::string_view sqlState, std::int32_t, bool inTransaction) {
  return sqlState == "0A000" && !inTransaction;
}

}  // namespace

const Failures& PostgreSqlFailures() {
  static const Failures failures{.losesSession = &LosesSession, .needsPreparingAnew = &NeedsPreparingAnew};
  return failures;
}

}  // namespace ADODB::engine
