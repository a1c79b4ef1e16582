// Pending files with the errors of the file-system object.
#pragma once

#include <memory>

#include "platform/base/pending_files.hpp"

namespace Scripting::local {

// As base::PendingFiles::Publish; null has no files.
bool PublishPending(const std::shared_ptr<base::PendingFiles>& pending);
// As base::PendingFiles::MakeDurable.
void MakeDurable(base::PendingFiles& pending);

}  // namespace Scripting::local
