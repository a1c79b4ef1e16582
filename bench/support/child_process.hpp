// A measured program run: wall time, and the most memory it held.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace orvane_bench {

struct RunFigures {
  double seconds = 0;
  double peakMebibytes = 0;  // resident set
};

// Runs the program to its end and throws when it fails.
RunFigures RunMeasured(const std::filesystem::path& program, const std::vector<std::string>& arguments);

// The folder of the running program; its peers lie beside it.
std::filesystem::path ProgramFolder();

}  // namespace orvane_bench
