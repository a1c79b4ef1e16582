#include "components/registration/register_jobs.hpp"

#include <memory>

#include "jobs/archive/archive.hpp"
#include "jobs/cleanup/clean_up.hpp"
#include "jobs/dormant/dormant_user_expiry.hpp"
#include "jobs/solve/solve_on_no_response.hpp"

namespace OrvaneProcess {
namespace {

template <class Class>
void Register(automation::ClassTable& classes, std::string_view progId) {
  classes.Register(progId, [] { return std::make_shared<Class>(); });
}

}  // namespace

void RegisterJobs(automation::ClassTable& classes) {
  Register<Archive>(classes, kArchiveProgId);
  Register<DormantUserExpiry>(classes, kDormantUserExpiryProgId);
  Register<CleanUp>(classes, kCleanUpProgId);
  Register<SolveOnNoResponseJob>(classes, kSolveOnNoResponseProgId);
}

}  // namespace OrvaneProcess
