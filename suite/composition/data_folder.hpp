// Where a suite's files lie, as its own settings say at the moment of asking.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace orvane {

// The data folder, by the parameter DataFileRelativePath.
std::string DataFolder(const std::filesystem::path& home);

// The place that the servers of a web farm share, by the parameters "Webfarm Implemented" and FTPPath;
// nothing without a web farm.
std::optional<std::string> SharedPath();

}  // namespace orvane
