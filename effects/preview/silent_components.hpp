// Components that take what they are given, and do nothing with it: for previews.
#pragma once

#include "platform/automation/class_table.hpp"

namespace effects {

// "Vantrel.Log".
void RegisterSilentLog(automation::ClassTable& classes);

// The calls of both ERP back ends, the escalation, and the two components that hear of concluded questions.
// What they answer tells their callers nothing.
void RegisterSilentComponents(automation::ClassTable& classes);

}  // namespace effects
