// The settings of the jobs in the table PARAMETERS.
#pragma once

#include <map>
#include <span>
#include <string>
#include <string_view>

#include "host/check/findings.hpp"
#include "platform/adodb/connection.hpp"

namespace orvane::host {

// All rows, by name. Raises what the database raises.
using Parameters = std::multimap<std::string, std::string>;
Parameters ReadParameters(const ADODB::ConnectionPtr& connection);

// The value as a job takes it, of the first row; empty for a row that is missing.
std::string ValueOf(const Parameters& parameters, std::string_view name);
// "Webfarm Implemented"; false for what is no truth value.
bool IsWebFarm(const Parameters& parameters);

// Whether the settings that these jobs read are there, are what they should be, and mean what somebody may
// have meant. `progIds` are those of the jobs.
void CheckParameters(const Parameters& parameters, std::span<const std::string_view> progIds,
                     Findings& findings);

}  // namespace orvane::host
