// The dates that the jobs write, and read again.
#pragma once

#include <string>

#include "host/check/findings.hpp"

namespace orvane::host {

// Shows how the current runtime's locale writes dates, and whether it reads them as what they were: the
// clean-up job takes its moments from such texts.
void CheckLocale(const std::string& name, Findings& findings);

}  // namespace orvane::host
