// What orvane-host's exit codes mean; service managers and scripts act on them. The numbers are those of
// sysexits.h.
#pragma once

namespace orvane_host {

enum ExitCode : int {
  kOk = 0,             // every job wrote its stop line
  kErrorsLogged = 1,   // --strict: it did, but something failed on the way
  kUsage = 64,         // the command line, an unknown job among it
  kUnavailable = 69,   // the suite's database does not answer: nothing was begun
  kUnfinished = 70,    // a job ended without its stop line, or the command failed
  kCannotCreate = 73,  // init: the place is taken or cannot be written
  kTryAgain = 75,      // another run holds the suite, or the run lost its lock and stopped at a safe point
  kConfiguration = 78  // the suite's configuration, or a lock that cannot be made
};

}  // namespace orvane_host
