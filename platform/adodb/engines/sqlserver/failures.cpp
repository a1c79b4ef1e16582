#include "platform/adodb/engines/sqlserver/failures.hpp"

namespace ADODB::engine {

const Failures& SqlServerFailures() {
  static const Failures failures;
  return failures;
}

}  // namespace ADODB::engine
