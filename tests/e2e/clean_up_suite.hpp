// A suite made by hand with the tables and folders that the clean-up job works on.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tests/e2e/hand_made_suite.hpp"
#include "tests/e2e/host_process.hpp"

namespace orvane_test {

inline constexpr const char* kCleanUpLog = "OrvCleanUpSvc_log_";

class CleanUpSuite {
 public:
  // DataFileRelativePath = Data, KeepTemporaryFiles = 24; no web farm.
  CleanUpSuite();

  void SetParameter(const std::string& name, const std::string& value);
  // A file below the data folder, last used as many hours ago.
  void AddFile(const std::string& name, int hoursAgo = 1) const;
  bool Exists(const std::string& name) const;
  // The files below the data folder, in order.
  std::vector<std::string> Files() const;

  Outcome Run() const;

  // The lines of the run log of one run that ended.
  static std::string FinishedRun();

  HandMadeSuite suite;
  Database database{suite.DatabaseFile()};
};

// "0 | OrvaneProcess | SOURCE caught: Object required (424). Additional information: Object required"
std::string ObjectRequiredEntry(const std::string& source);

}  // namespace orvane_test
