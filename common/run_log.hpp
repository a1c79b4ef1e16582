// OrvaneUtilities: what the run logs of all jobs share. Each job has its own writer.
#pragma once

#include <string>
#include <string_view>

#include "platform/automation/date_time.hpp"
#include "platform/scripting/file_system_object.hpp"

namespace OrvaneUtilities {

// The lines of 53 asterisks that frame the banners.
std::string_view RunLogRuler();

// Year "_" month "_" day without leading zeros: 2004_7_26.
std::string RunLogDatePart(automation::DateTime date);

// Makes the log folder when it is missing. Two jobs that do so at the same time do not fail each other.
void MakeRunLogFolder(Scripting::FileSystemObject& files, const std::string& folder);

}  // namespace OrvaneUtilities
