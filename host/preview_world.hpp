// What stands in place of databases and files while jobs are previewed.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "host/suite_home.hpp"
#include "platform/adodb/session/provider.hpp"
#include "platform/base/file_layer.hpp"

namespace orvane_host {

// Shared by the jobs of one preview, so that each sees what those before it would have done. An embedded
// database is copied when it is first connected to; on a server everything goes into a transaction that is
// rolled back when this object goes, however it goes. Files are changed in a layer over the real ones.
class PreviewWorld {
 public:
  // Why a preview cannot go on, with the exit code that says so. What was changed is undone by the process's
  // end; the function does not return.
  using Stop = std::function<void(const std::string& why, int exitCode)>;

  // FAILS: std::system_error when there is no place for the preview's own files, or when it lies in `home`.
  PreviewWorld(const SuiteHome& home, Stop stop);

  // Ends the preview as its failures do.
  void End(const std::string& why, int exitCode) const { stop_(why, exitCode); }

  const std::vector<std::shared_ptr<ADODB::engine::Provider>>& Providers() const { return providers_; }
  const std::shared_ptr<base::FileLayer>& Layer() const { return layer_; }
  // Where the preview's own files lie; nameless, or gone when a call returns.
  const std::filesystem::path& OwnFolder() const { return ownFolder_; }

 private:
  const Stop stop_;
  std::filesystem::path ownFolder_;
  std::shared_ptr<base::FileLayer> layer_;
  std::vector<std::shared_ptr<ADODB::engine::Provider>> providers_;
};

}  // namespace orvane_host
