#include "suite/composition/data_folder.hpp"

#include "common/parameters.hpp"
#include "common/text_helpers.hpp"
#include "platform/automation/variant.hpp"

namespace orvane {

std::string DataFolder(const std::filesystem::path& home) {
  return home.string() + "\\" +
         OrvaneUtilities::NormalizeFolderPath(OrvaneUtilities::GetParamValue("DataFileRelativePath"));
}

std::optional<std::string> SharedPath() {
  const std::string webFarm = OrvaneUtilities::GetParamValue("Webfarm Implemented");
  if (webFarm.empty() || !automation::ToBoolean(webFarm)) return std::nullopt;
  return OrvaneUtilities::GetParamValue("FTPPath");
}

}  // namespace orvane
