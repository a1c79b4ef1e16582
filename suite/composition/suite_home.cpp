#include "suite/composition/suite_home.hpp"

#include "suite/configuration/configuration.hpp"

namespace orvane {

SuiteHome::SuiteHome(const std::filesystem::path& home) : home_(Vantrel::AbsoluteHome(home)) {}

std::filesystem::path SuiteHome::SiteConfiguration() const {
  return Vantrel::SiteConfigurationPath(home_);
}

}  // namespace orvane
