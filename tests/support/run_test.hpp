// A suite around one run of a job: a real SQLite database, reached through watched ADO, a file tree in memory
// in which "/suite/home" is the installation, a log that remembers, and a clock that stands still at
// 26 July 2004, 09:05:03.
#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "tests/doubles/memory/memory_disk.hpp"
#include "tests/support/database_environment.hpp"

namespace orvane_test {

class RunTest : public testing::Test {
 protected:
  explicit RunTest(bool wal = true);

  DatabaseEnvironment environment_;
  SqliteDatabase& database_ = environment_.database;
  std::shared_ptr<AdodbJournal> adodb_ = environment_.adodb;
  Scripting::memory::MemoryDiskPtr disk_ = std::make_shared<Scripting::memory::MemoryDisk>();
};

}  // namespace orvane_test
