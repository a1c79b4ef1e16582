// What one message becomes in the archive job's run log.
#pragma once

#include <string>

namespace OrvaneProcess {

// The present timestamp, "  : " and the message, each control character of which is a "?"; a message of
// nothing but asterisks and spaces, a ruler, stands without a timestamp.
std::string ArchiveLogLine(const std::string& message);

}  // namespace OrvaneProcess
