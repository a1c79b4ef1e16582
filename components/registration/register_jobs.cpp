#include "components/registration/register_jobs.hpp"

#include <memory>

namespace OrvaneProcess {

void RegisterJobs(automation::ClassTable&) {}

}  // namespace OrvaneProcess
