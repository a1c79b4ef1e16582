#include "suite/composition/data_folder.hpp"

#include <string_view>

#include "common/parameters.hpp"
#include "common/text_helpers.hpp"
#include "platform/automation/variant.hpp"

namespace orvane {
namespace {

constexpr std::string_view kDataFolder = "DataFileRelativePath";
constexpr std::string_view kWebFarm = "Webfarm Implemented";
constexpr std::string_view kSharedPath = "FTPPath";

std::string FolderBelow(const std::filesystem::path& home, const std::string& relative) {
  return home.string() + "\\" + OrvaneUtilities::NormalizeFolderPath(relative);
}

}  // namespace

std::string DataFolder(const std::filesystem::path& home) {
  return FolderBelow(home, OrvaneUtilities::GetParamValue(kDataFolder));
}

OrvCommonMTS::Places FilePlaces(const std::filesystem::path& home) {
  const Scripting::DictionaryPtr values =
      OrvaneUtilities::GetParameterValues({kDataFolder, kWebFarm, kSharedPath});
  const auto value = [&](std::string_view name) { return automation::ToText(values->Item(name)); };
  OrvCommonMTS::Places places{FolderBelow(home, value(kDataFolder)), std::nullopt};
  const std::string webFarm = value(kWebFarm);
  if (!webFarm.empty() && automation::ToBoolean(webFarm)) places.shared = value(kSharedPath);
  return places;
}

}  // namespace orvane
