// "OrvaneBackendA.Calls" and "OrvaneBackendB.Calls": calls of the ERP, handed over through files.
//
// An update becomes one line of JSON in erp/calls-A.jsonl or erp/calls-B.jsonl of the installation:
//
//   {"TIME":"2004-07-26 09:05:03","COMPONENT":4711,"CALLNUMBER":"C-1", ... ,"SOLUTIONTEXT":"..."}
//
// TIME first, then the call's values in the order in which the job gave them. The program that feeds the ERP
// takes the lines up from there.
#pragma once

#include <filesystem>

#include "platform/automation/class_table.hpp"

namespace OrvaneBackend {

// Registers both generations for the installation in `home`. An update that cannot be written is raised (75).
void RegisterBackendCalls(automation::ClassTable& classes, const std::filesystem::path& home);

}  // namespace OrvaneBackend
