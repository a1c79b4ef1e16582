#include "common/run_log.hpp"

namespace OrvaneUtilities {

std::string_view RunLogRuler() {
  return "*****************************************************";
}

std::string RunLogDatePart(automation::DateTime date) {
  const automation::DateTimeParts parts = date.Parts();
  return std::to_string(parts.year) + "_" + std::to_string(parts.month) + "_" + std::to_string(parts.day);
}

}  // namespace OrvaneUtilities
