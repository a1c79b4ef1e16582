#include "host/suite_home.hpp"

#include "suite/configuration/configuration.hpp"

namespace orvane_host {

SuiteHome::SuiteHome(const std::filesystem::path& home) : home_(Vantrel::AbsoluteHome(home)) {}

std::filesystem::path SuiteHome::SiteConfiguration() const {
  return Vantrel::SiteConfigurationPath(home_);
}

}  // namespace orvane_host
