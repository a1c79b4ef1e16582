#include "suite/configuration/configuration.hpp"

#include <sys/stat.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <tuple>
#include <utility>

#include "components/interfaces/configuration.hpp"
#include "platform/automation/error.hpp"
#include "suite/configuration/site_file.hpp"
#include "suite/paths/native_path.hpp"

namespace Vantrel {
namespace {

// The installation's own file, parsed once for each state that it is found in.
class CurrentSiteFile {
 public:
  explicit CurrentSiteFile(std::filesystem::path path) : path_(std::move(path)) {}

  std::shared_ptr<const SiteFile> Get() {
    const std::lock_guard lock(mutex_);
    const std::optional<Stamp> stamp = Look();
    if (!file_ || !stamp || stamp != stamp_) {
      file_ = nullptr;
      file_ = std::make_shared<const SiteFile>(SiteFile::Read(path_));
      stamp_ = stamp;
    }
    return file_;
  }

 private:
  using Stamp = std::tuple<dev_t, ino_t, off_t, time_t, long, time_t, long>;

  std::optional<Stamp> Look() const {
    struct stat status {};
    if (stat(path_.c_str(), &status) != 0) return std::nullopt;
    return Stamp{status.st_dev,          status.st_ino,         status.st_size,        status.st_mtim.tv_sec,
                 status.st_mtim.tv_nsec, status.st_ctim.tv_sec, status.st_ctim.tv_nsec};
  }

  const std::filesystem::path path_;
  std::mutex mutex_;
  std::shared_ptr<const SiteFile> file_;
  std::optional<Stamp> stamp_;
};

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
  std::string GetConnectionString(std::string_view connection) override {
    return installation_->siteFile.Get()->Connection(product_, connection);
  }
  std::string getInstallDir() override { return installation_->home.string(); }

  void Load() override { LoadNative(SiteConfigurationPath(installation_->home)); }
  void LoadFile(std::string_view path) override { LoadNative(suite::NativePath(path, installation_->home)); }
  automation::Variant GetValue(std::string_view section, std::string_view key) const override {
    if (!loaded_) {
      throw automation::Error(kNotLoaded, "Vantrel.Configuration",
                              "The configuration must be loaded before a value is read");
    }
    return loaded_->Value(section, key);
  }

 private:
  void LoadNative(const std::filesystem::path& file) { loaded_ = installation_->loadedFiles.Read(file); }

  const std::shared_ptr<Installation> installation_;
  std::string product_;
  std::shared_ptr<const SiteFile> loaded_;
};

}  // namespace

std::filesystem::path AbsoluteHome(const std::filesystem::path& home) {
  const std::filesystem::path normal = std::filesystem::absolute(home).lexically_normal();
  return normal.has_filename() ? normal : normal.parent_path();
}

std::filesystem::path SiteConfigurationPath(const std::filesystem::path& home) {
  return suite::NativePath("config\\siteConfiguration.xml", home);
}

void RegisterConfiguration(automation::ClassTable& classes, const std::filesystem::path& home) {
  auto installation = std::make_shared<Installation>(AbsoluteHome(home));
  classes.Register(kConfigurationProgId,
                   [installation] { return std::make_shared<SiteConfiguration>(installation); });
}

}  // namespace Vantrel
