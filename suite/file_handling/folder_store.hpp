// A shared place that is mounted as a folder of this machine.
#pragma once

#include <memory>
#include <string_view>

#include "platform/base/file_layer.hpp"
#include "suite/file_handling/shared_store.hpp"

namespace OrvCommonMTS {

// `path` as the suite writes it ("\" or "/"). Raises 76 when it is no absolute path to an existing folder,
// or one that RootProblem refuses.
// What changes there changes in the layer only, if there is one.
std::unique_ptr<SharedStore> OpenFolderStore(std::string_view path,
                                             const std::shared_ptr<base::FileLayer>& layer);

}  // namespace OrvCommonMTS
