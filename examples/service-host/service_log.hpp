// An error log in place of the suite's: entries go to standard error, where a service manager collects them.
#pragma once

#include "components/interfaces/log.hpp"

class ServiceLog final : public Vantrel::Log {
 public:
  void WriteLogEntry(std::string_view errorSource, std::string_view message, std::int32_t code,
                     automation::Variant& result) override;
};
