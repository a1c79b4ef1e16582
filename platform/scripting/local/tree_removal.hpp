// Removes a folder with everything inside.
#pragma once

#include <string>

#include "platform/base/file_layer.hpp"

namespace Scripting::local {

// `native` is a folder, not a link to one. Children go in byte order of their names. Links are removed as
// links. A read-only file or folder (its owner may not write it) stops the removal with 70 unless `force`;
// what went before it stays removed. Depth is not bounded by open files. When somebody moves folders of the
// tree while it is being removed, the removal stops with 70 rather than walk into a place where it was not
// sent.
void RemoveTree(const std::string& native, bool force);

// The same in a layer, where nobody else moves anything.
void RemoveTree(base::FileLayer& layer, const std::string& native, bool force);

}  // namespace Scripting::local
