#include "suite/backend_calls/backend_calls.hpp"

#include <gtest/gtest.h>

#include <string>

#include "components/interfaces/backend_calls.hpp"
#include "tests/doubles/memory/registration.hpp"
#include "tests/support/temporary_folder.hpp"
#include "tests/support/test_runtime.hpp"

namespace OrvaneBackend {
namespace {

class BackendCallsTest : public testing::Test {
 protected:
  BackendCallsTest() {
    RegisterBackendCalls(runtime_.runtime.classes, folder_.Path());
    Scripting::memory::RegisterClasses(runtime_.runtime.classes,
                                       std::make_shared<Scripting::memory::MemoryDisk>());
    values_ = automation::CreateObject<Scripting::Dictionary>("Scripting.Dictionary");
    values_->Add("COMPONENT", 4711);
    values_->Add("CALLNUMBER", "C-1");
  }
  std::string Update(std::string_view progId) {
    std::string message;
    automation::CreateObject<Calls>(progId)->UpdateCall(message, values_);
    return message;
  }
  orvane_test::TestRuntime runtime_;
  orvane_test::TemporaryFolder folder_;
  Scripting::DictionaryPtr values_;
};

TEST_F(BackendCallsTest, EachGenerationHasItsFile) {
  EXPECT_EQ(Update(kCallsAProgId), "Handed over in calls-A.jsonl");
  EXPECT_EQ(Update(kCallsBProgId), "Handed over in calls-B.jsonl");
  const std::string line = "{\"TIME\":\"2004-07-26 09:05:03\",\"COMPONENT\":4711,\"CALLNUMBER\":\"C-1\"}\n";
  EXPECT_EQ(orvane_test::TemporaryFolder::Read(folder_.Path() / "erp" / "calls-A.jsonl"), line);
  EXPECT_EQ(orvane_test::TemporaryFolder::Read(folder_.Path() / "erp" / "calls-B.jsonl"), line);
}

TEST_F(BackendCallsTest, ACallThatCannotBeHandedOverIsRaised) {
  folder_.Write("erp", "a file where the folder should be");
  try {
    Update(kCallsAProgId);
    FAIL();
  } catch (const automation::Error& error) {
    EXPECT_EQ(error.Number(), 75);
    EXPECT_EQ(error.Source(), "OrvaneBackendA.Calls");
  }
}

}  // namespace
}  // namespace OrvaneBackend
