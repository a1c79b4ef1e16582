// The suite's components about service requests, on its own database.
#pragma once

#include <filesystem>

#include "platform/automation/class_table.hpp"

namespace OrvServiceRequest {

// Registers the four components for the installation in `home`:
//
// - "OrvServiceRequest.Question" reads contract and warranty from the columns CONTRACT,
//   CONTRACTDESC, WARRANTY and WARRANTYDESC of QUESTIONS; a database without them has neither.
// - "OrvServiceRequest.Prospect" tells how to reach a prospect: name and company of its PROSPECT row, empty
//   without one.
// - The component that hears of a prospect's concluded question appends
//   {"TIME":"2004-07-26 09:05:03","EVENT":"question","EMAILID":"ada@example.org",
//    "COMMENT":"","CONCLUDED":true} in one line to outbox/prospects.jsonl.
// - The component that hears of a concluded question appends
//   {"TIME":"2004-07-26 09:05:03","EVENT":"concluded","QUESTION":26} to outbox/questions.jsonl.
//
// The outboxes are for programs that follow what happens to questions and prospects.
void RegisterServiceRequest(automation::ClassTable& classes, const std::filesystem::path& home);

}  // namespace OrvServiceRequest
