// "Vantrel.Configuration" on the site configuration file of an installation.
#pragma once

#include <filesystem>

#include "platform/automation/class_table.hpp"

namespace Vantrel {

// Where the site configuration file of an installation lies.
std::filesystem::path SiteConfigurationPath(const std::filesystem::path& home);

// The installation directory as an absolute path without "." and ".." parts or a trailing separator.
std::filesystem::path AbsoluteHome(const std::filesystem::path& home);

// Registers the component for the installation in `home`.
//
// Connection strings are answered from the file as it is at that moment: it is parsed again whenever its
// time, size or identity has changed, because jobs ask for a string with every statement. Load and LoadFile
// always read the file that they name.
void RegisterConfiguration(automation::ClassTable& classes, const std::filesystem::path& home);

}  // namespace Vantrel
