// Customers who stayed away go; nobody else does.
#include <gmock/gmock.h>

#include "tests/e2e/power_cuts/scenario.hpp"

namespace orvane_test {
namespace {

class DormantScenario final : public Scenario {
 public:
  using Scenario::Scenario;

  std::string Job() const override { return "DormantUserExpiry"; }
  void PutFiles() override {}

  std::vector<std::string> RowStatements() const override {
    std::vector<std::string> statements{"delete from PROSPECT", "delete from PARAMETERS",
                                        "insert into PARAMETERS values ('MAXDORMANCYTIME', '30')"};
    for (int i = 0; i < 12; ++i) {
      const bool due = i % 2 == 0;
      statements.push_back("insert into PROSPECT (EMAILID, LASTVISITEDTIME, PENDINGQUESTIONS) values ('" +
                           std::string(due ? "due" : "kept") + std::to_string(i) + "', '" +
                           DateText((due || i == 5 ? -31 : -29) * kDay) + "', " + (i == 5 ? "1" : "0") + ")");
    }
    return statements;
  }

  void ExpectNothingLost(const std::string& when) override {
    EXPECT_THAT(Left("kept"), testing::ElementsAre("kept1", "kept11", "kept3", "kept5", "kept7", "kept9"))
        << when;
  }

  void ExpectAllDone(const std::string& when) override {
    ExpectNothingLost(when);
    EXPECT_THAT(Left("due"), testing::IsEmpty()) << when;
  }

 private:
  std::vector<std::string> Left(const std::string& kind) const {
    return suite_.Rows().Column("select EMAILID from PROSPECT where EMAILID like '" + kind +
                                "%' order by EMAILID");
  }
};

}  // namespace

std::unique_ptr<Scenario> MakeDormantScenario(PowerCutSuite& suite) {
  return std::make_unique<DormantScenario>(suite);
}

std::unique_ptr<Scenario> MakeScenario(const std::string& name, PowerCutSuite& suite) {
  if (name == "Archive" || name == "ArchiveOnAFarm") return MakeArchiveScenario(suite, name != "Archive");
  if (name == "CleanUp") return MakeCleanUpScenario(suite);
  if (name == "DormantUserExpiry") return MakeDormantScenario(suite);
  return MakeSolveScenario(suite);
}

}  // namespace orvane_test
