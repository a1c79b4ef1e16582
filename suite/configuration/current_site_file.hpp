// The installation's own configuration file, parsed again whenever it changes.
#pragma once

#include <ctime>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

#include "platform/base/descriptor.hpp"
#include "platform/base/file_stamp.hpp"
#include "suite/configuration/site_file.hpp"

namespace Vantrel {

// Safe to use from several threads.
class CurrentSiteFile {
 public:
  explicit CurrentSiteFile(std::filesystem::path path) : path_(std::move(path)) {}

  // The file as it is now; raises what SiteFile::Read raises. A file that was written, replaced or removed is
  // seen at once, one that was swapped together with its folder within a second.
  std::shared_ptr<const SiteFile> Get();

 private:
  bool IsUnchanged();
  void Load();

  const std::filesystem::path path_;
  std::mutex mutex_;
  std::shared_ptr<const SiteFile> file_;
  std::optional<base::FileStamp> stamp_;  // nothing while a further change might leave the same stamp
  base::Descriptor descriptor_;           // of the file itself; closed where the path leads over links
  std::time_t pathSeen_ = 0;  // second of the steady clock in which the whole path was last checked
};

}  // namespace Vantrel
