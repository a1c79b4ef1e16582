// Text files in a layer over the file tree, as text_stream.hpp and new_file.hpp have them in the tree.
#pragma once

#include <memory>
#include <string>

#include "platform/base/created_files.hpp"
#include "platform/scripting/file_system_object.hpp"
#include "platform/scripting/local/tree_status.hpp"

namespace Scripting::local {

TextStreamPtr OpenInLayer(LayerPtr layer, const std::string& native, IOMode mode, int flags);

TextStreamPtr OpenNewInLayer(LayerPtr layer, const std::string& native, bool replaces,
                             std::shared_ptr<base::CreatedFiles> created);

}  // namespace Scripting::local
