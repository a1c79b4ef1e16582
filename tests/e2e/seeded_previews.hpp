// Suites in which things go wrong as they do on real sites, drawn by a seed.
#pragma once

#include <random>
#include <string>
#include <vector>

#include "tests/e2e/previewed_suite.hpp"

namespace orvane_test {

// The engines that the seeded tests of this program are for; each program that links them defines it.
std::vector<std::string> EnginesOfSeededPreviews();
// How many seeds each engine gets in everyday tests.
unsigned EverydaySeeds();

// The draws are the same on every engine.
void Disturb(PreviewedSuite& suite, std::mt19937& random);
// The same of what a run has left: damaged archive files, folders in their places, requests that are due
// again.
void DisturbWhatARunHasLeft(PreviewedSuite& suite, std::mt19937& random);

}  // namespace orvane_test
