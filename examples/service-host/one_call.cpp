// The least that it takes: a suite's classes in a runtime, and one call of a job, which is created by its
// ProgID. There is no lock and no journal here: whoever calls sees to it that no two runs overlap.
//
//   one-call HOME JOB
#include <iostream>

#include "components/interfaces/job.hpp"
#include "platform/automation/error.hpp"
#include "platform/automation/runtime.hpp"
#include "suite/composition/register_suite.hpp"

int main(int count, char** words) try {
  if (count != 3) {
    std::cerr << "one-call HOME JOB\n";
    return 64;
  }
  automation::Runtime runtime;
  orvane::RegisterSuite(runtime, words[1]);
  const automation::RuntimeScope scope(runtime);
  automation::CreateObject<OrvaneProcess::Job>(words[2])->Run();
  return 0;
} catch (const automation::Error& error) {
  std::cerr << error.Source() << ": " << error.Description() << " (" << error.Number() << ")\n";
  return 1;
}
