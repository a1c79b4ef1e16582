#include "tests/support/run_test.hpp"

#include "tests/doubles/memory/registration.hpp"

namespace orvane_test {

RunTest::RunTest(bool wal) : environment_(wal) {
  Scripting::memory::RegisterClasses(environment_.runtime.classes, disk_);
  disk_->AddFolder("/suite/home");
}

}  // namespace orvane_test
