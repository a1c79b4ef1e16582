// A measured run of a program.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace orvane_bench {

struct Measured {
  double seconds = 0;  // of the whole process, from outside
  double ownSeconds =
      0;  // what the program told of its own time (see part.hpp); `seconds` when it told nothing
  double peakMebibytes = 0;  // resident set
  double instructions = 0;   // where they were counted
};

using Environment = std::vector<std::string>;  // "NAME=value", in addition to what there is

// Runs the program to its end; throws, with its output, when it fails.
Measured RunMeasured(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                     const Environment& environment = {});

// The same with the instructions counted that the process and its children execute in user mode: by perf
// where the machine lets it, otherwise by callgrind, which takes some fifty times as long: the clock by which
// rows grow old is slowed as much. The times mean nothing.
Measured RunCounted(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                    const Environment& environment = {});

// The folder of the running program; its peers lie beside it.
std::filesystem::path ProgramFolder();

}  // namespace orvane_bench
