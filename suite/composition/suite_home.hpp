// Where the parts of a suite lie on this machine.
#pragma once

#include <filesystem>

namespace orvane {

class SuiteHome {
 public:
  // `home` may be relative to the working directory.
  explicit SuiteHome(const std::filesystem::path& home);

  const std::filesystem::path& Path() const { return home_; }  // absolute
  std::filesystem::path SiteConfiguration() const;
  std::filesystem::path Directory() const { return home_ / "config" / "directory.ldif"; }
  std::filesystem::path Journals() const { return home_ / "journal"; }
  std::filesystem::path Lock() const { return home_ / ".lock"; }
  // The run logs and the error log lie beside the installation.
  std::filesystem::path Logs() const { return home_.parent_path() / "OrvLog"; }
  std::filesystem::path ErrorLog() const { return Logs() / "Vantrel.log"; }

 private:
  std::filesystem::path home_;
};

}  // namespace orvane
