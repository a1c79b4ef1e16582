// The site configuration, looked through name by name.
#pragma once

#include <optional>

#include "host/check/findings.hpp"
#include "suite/composition/suite_home.hpp"
#include "suite/configuration/site_file.hpp"

namespace orvane::host {

// The keys that are read of a section, for those who document them.
struct KnownSection {
  std::string_view name;
  std::vector<std::string_view> keys;
};
const std::vector<KnownSection>& KnownSections();

// The configuration; nothing when no job could run with it.
std::optional<Vantrel::SiteFile> CheckSite(const SuiteHome& home, Findings& findings);

}  // namespace orvane::host
