// A log component that takes no entries.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "components/interfaces/log.hpp"
#include "platform/automation/error.hpp"
#include "tests/support/test_runtime.hpp"

namespace orvane_test {

// Notes what it is given and raises 61 (Disk full) from the `failsFrom`-th entry on, 1 being the first.
class BrokenLog : public Vantrel::Log {
 public:
  explicit BrokenLog(
      std::shared_ptr<std::vector<LogEntry>> entries = std::make_shared<std::vector<LogEntry>>(),
      std::size_t failsFrom = 1)
      : entries_(std::move(entries)), failsFrom_(failsFrom) {}

  void WriteLogEntry(std::string_view errorSource, std::string_view message, std::int32_t code,
                     automation::Variant& result) override {
    entries_->push_back({std::string(errorSource), std::string(message), code});
    if (entries_->size() >= failsFrom_) {
      throw automation::Error(automation::ErrorNumber::DiskFull, "Vantrel.Log");
    }
    result = true;
  }

 private:
  std::shared_ptr<std::vector<LogEntry>> entries_;
  std::size_t failsFrom_;
};

}  // namespace orvane_test
