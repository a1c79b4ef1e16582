#include "host/site_settings.hpp"

#include <string_view>

#include "platform/automation/error.hpp"

namespace orvane_host {
namespace {

[[noreturn]] void Refuse(const Vantrel::SiteFile& site, std::string_view section, std::string_view key,
                         std::string_view found, std::string_view expected) {
  throw automation::Error(Vantrel::kUnreadableFile, "Vantrel.Configuration",
                          site.Path().string() + ": section \"" + std::string(section) + "\", key \"" +
                              std::string(key) + "\": found \"" + std::string(found) + "\"; expected " +
                              std::string(expected));
}

}  // namespace

std::map<char, std::string> Drives(const Vantrel::SiteFile& site) {
  std::map<char, std::string> drives;
  for (const auto& [key, folder] : site.Values("DRIVES")) {
    if (key.size() != 1 || key[0] < 'A' || key[0] > 'Z') {
      Refuse(site, "DRIVES", key, folder, "a key of one letter, A to Z");
    }
    if (folder.empty() || folder[0] != '/') Refuse(site, "DRIVES", key, folder, "an absolute path");
    drives.emplace(key[0], folder);
  }
  return drives;
}

}  // namespace orvane_host
