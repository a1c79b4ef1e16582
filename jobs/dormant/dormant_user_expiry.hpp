// Deletes the prospects who have not visited for too long and who wait for nothing.
#pragma once

#include <cstdint>

#include "components/interfaces/job.hpp"

namespace OrvaneProcess {

// A prospect goes when LASTVISITEDTIME plus MAXDORMANCYTIME days lies before the moment the run began and
// PENDINGQUESTIONS is 0 or less. A null in either column keeps the prospect. Each deletion stands by itself:
// a run that fails half way leaves the deletions made so far.
class DormantUserExpiry : public DormantUserExpiryService {
 public:
  // One run; a failure leaves a start banner without its stop line in the run log and nothing else.
  void Run() override;

  // One run; the first failure ends it and is raised, and the stop line is not written.
  void ExpireDormantUsers() override;

 private:
  void RunExpiry();
  // Appends to the day's run log: 1 the start banner, 2 the stop line; any other kind writes nothing.
  void WriteJobLog(std::int16_t kind);
};

}  // namespace OrvaneProcess
