// Where a suite's files lie, as its own settings say at the moment of asking.
#pragma once

#include <filesystem>
#include <string>

#include "suite/file_handling/file_handling.hpp"

namespace orvane {

// The data folder, by the parameter DataFileRelativePath.
std::string DataFolder(const std::filesystem::path& home);

// That folder and the place that the servers of a web farm share, by the parameters "Webfarm Implemented" and
// FTPPath, in one statement.
OrvCommonMTS::Places FilePlaces(const std::filesystem::path& home);

}  // namespace orvane
