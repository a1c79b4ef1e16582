// The stand-in of the suite's style-sheet loader, on the platform's XML classes.
#pragma once

#include "platform/automation/class_table.hpp"

namespace OrvCommon {

// "OrvCommon.LoadXSLs". The current runtime must have "MSXML2.DOMDocument" and "MSXML2.XSLTemplate".
void RegisterLoadXSLs(automation::ClassTable& classes);

}  // namespace OrvCommon
