#include "run/exit_codes.hpp"

namespace orvane {

std::span<const ExitCodeMeaning> ExitCodes() {
  static constexpr ExitCodeMeaning kCodes[] = {
      {kOk, "every job wrote its stop line; what went wrong is printed as warnings"},
      {kErrorsLogged,
       "run --strict: something failed (an entry in the error log, a failure line in a run log, a mail that "
       "was not taken, a missing start line); status --max-age: a job has no finished run that is young "
       "enough"},
      {kUsage, "usage: the command line, an unknown job among it"},
      {kUnavailable,
       "a service that the job needs does not answer: nothing was begun, or the run stopped at a safe point "
       "because it went away"},
      {kUnfinished, "a job ended without its stop line, or the command failed; the reason is printed"},
      {kCannotCreate, "init could not make the suite"},
      {kTryAgain,
       "another run holds the suite; or the run stopped at a safe point, because it was asked to or had lost "
       "its lock"},
      {kLimit,
       "the limit would be exceeded: nothing was begun, or the run stopped at a safe point before it was"},
      {kConfiguration, "configuration, or a lock or journal that cannot be made"},
  };
  return kCodes;
}

}  // namespace orvane
