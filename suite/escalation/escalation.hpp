// "OrvaneProcessMTS.SolveOnNoResponse": the request to send escalation mails, handed over through a file.
//
// Who is told about which question when is a rule of each site. This component has no such rules and sends
// nothing itself: it appends {"TIME":"2004-07-26 09:05:03","REQUEST":"SendingEscalationMails"} to
// outbox/escalation.jsonl of the installation, for the site's own program to act on.
#pragma once

#include <filesystem>

#include "platform/automation/class_table.hpp"

namespace OrvaneProcessMTS {

// Registers the component for the installation in `home`. A request that cannot be written is raised (75).
void RegisterEscalation(automation::ClassTable& classes, const std::filesystem::path& home);

}  // namespace OrvaneProcessMTS
