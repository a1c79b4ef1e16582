#include "platform/adodb/sql/engine_error.hpp"

#include <string_view>
#include <utility>

namespace ADODB::engine {
namespace {

std::int32_t NumberOf(std::string_view sqlState) {
  if (sqlState == "42S02" || sqlState == "42P01") return kNoSuchTable;
  const std::string_view sqlClass = sqlState.substr(0, 2);
  if (sqlClass == "42") return kStatementFailure;
  if (sqlClass == "23") return kConstraintViolation;
  if (sqlClass == "28") return kAuthenticationFailed;
  return kUnspecifiedFailure;
}

}  // namespace

automation::Error EngineError(std::string source, std::string message, std::string sqlState,
                              std::int32_t nativeCode) {
  automation::Error error(NumberOf(sqlState), std::move(source), std::move(message));
  error.WithEngineCodes(std::move(sqlState), nativeCode);
  return error;
}

}  // namespace ADODB::engine
