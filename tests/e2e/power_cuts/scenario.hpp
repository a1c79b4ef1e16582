// What one job has to do in the tests of power cuts, and what must be true of it afterwards.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tests/e2e/hand_made_suite.hpp"
#include "tests/e2e/power_cuts/suite.hpp"

namespace orvane_test {

class Scenario {
 public:
  explicit Scenario(PowerCutSuite& suite) : suite_(suite) {}
  virtual ~Scenario() = default;
  Scenario(const Scenario&) = delete;
  Scenario& operator=(const Scenario&) = delete;

  virtual std::string Job() const = 0;
  // Files, once.
  virtual void PutFiles() = 0;
  // The rows to work on, in place of whatever is there.
  virtual std::vector<std::string> RowStatements() const = 0;
  // After a power cut: nothing is lost, nothing is deleted that was not to be.
  virtual void ExpectNothingLost(const std::string& when) = 0;
  // After the next run, which was not disturbed: all is done.
  virtual void ExpectAllDone(const std::string& when) = 0;

 protected:
  PowerCutSuite& suite_;
};

// "Archive", "ArchiveOnAFarm", "CleanUp", "DormantUserExpiry", "SolveOnNoResponse".
std::unique_ptr<Scenario> MakeScenario(const std::string& name, PowerCutSuite& suite);

std::unique_ptr<Scenario> MakeArchiveScenario(PowerCutSuite& suite, bool onAFarm);
std::unique_ptr<Scenario> MakeCleanUpScenario(PowerCutSuite& suite);
std::unique_ptr<Scenario> MakeDormantScenario(PowerCutSuite& suite);
std::unique_ptr<Scenario> MakeSolveScenario(PowerCutSuite& suite);

}  // namespace orvane_test
