#include "suite/escalation/escalation.hpp"

#include <gtest/gtest.h>

#include "components/interfaces/escalation.hpp"
#include "tests/support/temporary_folder.hpp"
#include "tests/support/test_runtime.hpp"

namespace OrvaneProcessMTS {
namespace {

TEST(EscalationTest, EveryRequestIsALine) {
  orvane_test::TestRuntime runtime;
  orvane_test::TemporaryFolder folder;
  RegisterEscalation(runtime.runtime.classes, folder.Path());
  const auto escalation = automation::CreateObject<SolveOnNoResponse>(kSolveOnNoResponseProgId);
  escalation->SendingEscalationMails();
  escalation->SendingEscalationMails();
  const std::string line = "{\"TIME\":\"2004-07-26 09:05:03\",\"REQUEST\":\"SendingEscalationMails\"}\n";
  EXPECT_EQ(orvane_test::TemporaryFolder::Read(folder.Path() / "outbox" / "escalation.jsonl"), line + line);
}

}  // namespace
}  // namespace OrvaneProcessMTS
