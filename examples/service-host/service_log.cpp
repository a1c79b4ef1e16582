#include "service_log.hpp"

#include <iostream>
#include <string>

void ServiceLog::WriteLogEntry(std::string_view errorSource, std::string_view message, std::int32_t code,
                               automation::Variant& result) {
  // "<3>" is the journal's mark of an error; one entry is one line.
  std::string line = "<3>" + std::string(errorSource) + " [" + std::to_string(code) + "]: ";
  for (const char c : message) line += c == '\r' || c == '\n' ? ' ' : c;
  std::cerr << line << std::endl;
  result = true;
}
