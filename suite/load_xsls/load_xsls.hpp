// The stand-in of the suite's style-sheet loader, on the platform's XML classes.
#pragma once

#include <chrono>
#include <functional>

#include "platform/automation/class_table.hpp"

namespace OrvCommon {

// "OrvCommon.LoadXSLs". A sheet that was prepared before is handed out again while no file of its folder has
// changed, since preparing takes several times as long as rendering a mail. The current runtime must have
// "MSXML2.DOMDocument" and "MSXML2.XSLTemplate". `clock` decides which files changed so recently that their
// times do not show a further change.
using FileClock = std::function<std::chrono::system_clock::time_point()>;
void RegisterLoadXSLs(automation::ClassTable& classes, FileClock clock = &std::chrono::system_clock::now);

}  // namespace OrvCommon
