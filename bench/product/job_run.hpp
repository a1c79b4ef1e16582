// A run of a job as the host makes it, within this process.
#pragma once

#include <filesystem>
#include <string>

namespace orvane_bench {

// Throws when the job leaves no stop line or an error was logged.
void RunJob(const std::filesystem::path& home, const std::string& job);

}  // namespace orvane_bench
