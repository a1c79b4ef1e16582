// What stands between a suite's classes and its jobs while a run is recorded or previewed.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/adodb/session/provider.hpp"
#include "platform/automation/date_time.hpp"
#include "platform/base/file_layer.hpp"

namespace effects {
class ReadListener;
class Recorder;
class ServiceWatch;
}  // namespace effects

namespace orvane {

// In place of the real databases and files: whatever is changed there is gone afterwards.
struct World {
  std::vector<std::shared_ptr<ADODB::engine::Provider>> providers;
  std::shared_ptr<base::FileLayer> layer;
  std::filesystem::path ownFolder;  // for files of its own; nameless, or gone when a call returns
  // Files of the shared folders that are looked through for old ones, as first seen. May be null.
  std::shared_ptr<std::map<std::string, std::uint64_t>> sharedFiles = nullptr;
};

// All of it must outlive what the runtime's classes make. Nothing is wrapped where there is no recorder.
struct Wiring {
  effects::Recorder* recorder = nullptr;
  bool recordsRows = false;                // changes of the databases as well
  effects::ServiceWatch* watch = nullptr;  // of the directory; may be null
  const World* world = nullptr;            // null: the real one
  effects::ReadListener* reads = nullptr;  // of record sets and folders; only with a recorder
  // The local moment by which shared files are old; nothing: now.
  std::optional<automation::DateTime> at = std::nullopt;
};

}  // namespace orvane
