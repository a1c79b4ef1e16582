// A suite around one dormant user expiry: a real SQLite database, a file tree in memory, a clock that stands
// still at 26 July 2004, 09:05:03.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "jobs/dormant/dormant_user_expiry.hpp"
#include "platform/scripting/memory/memory_disk.hpp"
#include "tests/support/database_environment.hpp"

namespace orvane_test {

class DormantUserExpiryTest : public testing::Test {
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

  DatabaseEnvironment environment_;
  SqliteDatabase& database_ = environment_.database;
  AdodbJournal* adodb_ = environment_.adodb.get();
  Scripting::memory::MemoryDiskPtr disk_ = std::make_shared<Scripting::memory::MemoryDisk>();
  OrvaneProcess::DormantUserExpiry job_;
};

}  // namespace orvane_test
