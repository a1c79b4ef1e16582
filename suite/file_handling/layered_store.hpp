// Shared places whose changes stay in a layer.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include "platform/base/file_layer.hpp"
#include "suite/file_handling/shared_store.hpp"

namespace OrvCommonMTS {

// A shared folder of this machine, seen and changed through the layer.
std::unique_ptr<SharedStore> MakeLayeredFolderStore(std::filesystem::path root,
                                                    std::shared_ptr<base::FileLayer> layer);

// What would have become of a place that the layer cannot lie over: items that are gone, and files that were
// stored, by their paths in the layer.
struct SharedChanges {
  std::shared_ptr<base::FileLayer> layer;
  std::filesystem::path ownFolder;  // for copies, which stay there for as long as a call lasts
  std::map<std::string, std::string> stored;
  std::set<std::string> gone;
};

// A shared place behind a server, which is only read.
std::unique_ptr<SharedStore> MakeReadOnlyStore(std::unique_ptr<SharedStore> real, std::string place,
                                               std::shared_ptr<SharedChanges> changes);

// The folder's item that `name` means, as the layer shows it: the exact one, or one that differs in the case
// of its ASCII letters. `below` gives such a one of the folder itself. Kept as written when there is none.
std::filesystem::path EntryInLayer(
    const base::FileLayer& layer, const std::filesystem::path& folder, const std::string& name,
    const std::function<std::optional<std::string>(const std::string& folder, const std::string& name)>&
        below);

}  // namespace OrvCommonMTS
