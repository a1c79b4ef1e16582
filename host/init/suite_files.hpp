// Makes the folders and files of a new suite.
#pragma once

#include <string>
#include <string_view>

#include "suite/composition/suite_home.hpp"

namespace orvane::host {

// Whether the place is free: it does not exist, or it is an empty folder.
bool IsFree(const SuiteHome& home);

// Folders, site configuration, directory and style sheets. Raises std::filesystem::filesystem_error or
// std::system_error.
void MakeSuiteFiles(const SuiteHome& home, std::string_view database, std::string_view catalogue);

// Removes what MakeSuiteFiles and whoever came after it have put into the place, and the place itself when
// `madeHome`. Raises nothing.
void RemoveSuiteFiles(const SuiteHome& home, bool madeHome);

// The text of a site configuration file.
std::string SiteConfigurationText(std::string_view database, std::string_view catalogue);

// A mode of 0 leaves it to the process's mask.
void WriteFile(const std::filesystem::path& file, std::string_view content, unsigned mode = 0);

}  // namespace orvane::host
