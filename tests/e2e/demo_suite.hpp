// The suite that "orvane-host init --demo" makes.
#pragma once

#include <filesystem>

namespace orvane_test {

// Makes one at `home`, which must not exist. Only the first call of a process runs the program; the others
// copy what it has made, with the times of the files, since the jobs go by those.
void MakeDemoSuite(const std::filesystem::path& home);

}  // namespace orvane_test
