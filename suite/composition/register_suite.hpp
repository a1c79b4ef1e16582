// All that the jobs of a suite can create, by the suite's home folder.
#pragma once

#include <filesystem>

#include "platform/automation/export.hpp"
#include "platform/automation/runtime.hpp"

namespace orvane {

// Registers in the runtime's class table the four jobs, the platform's classes and the suite's components, as
// the site configuration of the suite at `home` says, and sets the locale by the environment where there is
// none. A class whose ProgID is in the table already stays: so a host puts a component of its own, an error
// log for example, in the place of the suite's.
//
// Drives and the mail transport count as they are configured now; connection strings and the directory's
// account are read again when they are needed. The table keeps what its classes share, a pool of connections
// among it; tables copied from it share that as well, on any thread.
//
// FAILS: automation::Error; 457 when one of the jobs is in the table already, as after a first call; for a
// configuration that no job could run with, what says why. The runtime is as before then.
ORVANE_EXPORT void RegisterSuite(automation::Runtime& runtime, const std::filesystem::path& home);

}  // namespace orvane
