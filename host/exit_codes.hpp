// What orvane-host's exit codes mean; service managers and scripts act on them. The numbers are those of
// sysexits.h.
#pragma once

namespace orvane_host {

enum ExitCode : int {
  kOk = 0,             // every job wrote its stop line
  kErrorsLogged = 1,   // --strict: it did, but the error log got entries
  kUsage = 64,         // the command line, an unknown job among it
  kUnfinished = 70,    // a job ended without its stop line, or the command failed
  kCannotCreate = 73,  // init: the place is taken or cannot be written
  kConfiguration = 78  // the suite's configuration
};

}  // namespace orvane_host
