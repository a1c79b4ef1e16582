// What the site configuration says about the machine. A value that means nothing raises
// Vantrel::kUnreadableFile, naming the file, the section and the key.
#pragma once

#include <map>
#include <string>

#include "suite/configuration/site_file.hpp"

namespace orvane_host {

// Section DRIVES: drive letters and the folders of this machine that they stand for. The section may be
// missing.
std::map<char, std::string> Drives(const Vantrel::SiteFile& site);

}  // namespace orvane_host
