// A suite around one dormant user expiry.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "jobs/dormant/dormant_user_expiry.hpp"
#include "tests/support/run_test.hpp"

namespace orvane_test {

class DormantUserExpiryTest : public RunTest {
 protected:
  static constexpr std::string_view kLogFile = "/suite/OrvLog/OrvDormantUserExpirySvc_log_2004_7_26.txt";
  static constexpr std::string_view kStartBanner =
      "*****************************************************\r\n"
      "Orvane NTService Log \r\n"
      "*****************************************************\r\n"
      "Dormant User Expiry - NTService Started at : 7-26-2004 09:05:03\r\n";
  static constexpr std::string_view kStopLine =
      " NTService Stopped at : 7-26-2004 09:05:03\r\n"
      "*****************************************************\r\n";

  explicit DormantUserExpiryTest(bool wal = true);

  void SetLimit(std::string_view sqlLiteral);
  // A prospect with these column values, written as SQL literals.
  void AddProspect(std::string_view name, std::string_view lastVisit, std::string_view pendingQuestions);
  // The names of the prospects that are there, in order of insertion.
  std::vector<std::string> Prospects();

  std::string Log() const { return disk_->Bytes(kLogFile); }

  // Runs ExpireDormantUsers; the number of the error it raises, 0 for none.
  std::int32_t Expire();

  OrvaneProcess::DormantUserExpiry job_;
};

}  // namespace orvane_test
