#include "suite/configuration/configuration.hpp"

#include <cstdint>
#include <memory>
#include <utility>

#include "components/interfaces/configuration.hpp"
#include "platform/automation/error.hpp"
#include "suite/configuration/current_site_file.hpp"
#include "suite/configuration/site_file.hpp"
#include "suite/paths/native_path.hpp"

namespace Vantrel {
namespace {

constexpr std::string_view kSiteFile = "config\\siteConfiguration.xml";

// What all components of one installation share.
struct Installation {
  explicit Installation(std::filesystem::path folder)
      : home(std::move(folder)), siteFile(SiteConfigurationPath(home)) {}
  const std::filesystem::path home;
  CurrentSiteFile siteFile;
  RereadSiteFile loadedFiles;  // what Load and LoadFile read
};

class SiteConfiguration : public Configuration {
 public:
  explicit SiteConfiguration(std::shared_ptr<Installation> installation)
      : installation_(std::move(installation)) {}

  std::string RootPath() const override { return installation_->home.string(); }
  void SelectProduct(std::string_view product, std::int32_t) override { product_ = product; }
  const std::string& GetConnectionString(std::string_view connection) override {
    current_ = installation_->siteFile.Get();
    return current_->Connection(product_, connection);
  }
  std::string getInstallDir() override { return installation_->home.string(); }

  void Load() override { LoadFile(kSiteFile); }
  void LoadFile(std::string_view path) override {
    loaded_ = installation_->loadedFiles.Read(path, installation_->home.native());
  }
  automation::Variant GetValue(std::string_view section, std::string_view key) const override {
    if (!loaded_) {
      throw automation::Error(kNotLoaded, "Vantrel.Configuration",
                              "The configuration must be loaded before a value is read");
    }
    return loaded_->Value(section, key);
  }

 private:
  const std::shared_ptr<Installation> installation_;
  std::string product_;
  std::shared_ptr<const SiteFile> current_;  // whose connection string was given out
  std::shared_ptr<const SiteFile> loaded_;
};

}  // namespace

std::filesystem::path AbsoluteHome(const std::filesystem::path& home) {
  const std::filesystem::path normal = std::filesystem::absolute(home).lexically_normal();
  return normal.has_filename() ? normal : normal.parent_path();
}

std::filesystem::path SiteConfigurationPath(const std::filesystem::path& home) {
  return suite::NativePath(kSiteFile, home);
}

void RegisterConfiguration(automation::ClassTable& classes, const std::filesystem::path& home) {
  auto installation = std::make_shared<Installation>(AbsoluteHome(home));
  classes.RegisterAs<Configuration>(
      kConfigurationProgId, [installation] { return std::make_shared<SiteConfiguration>(installation); });
}

}  // namespace Vantrel
