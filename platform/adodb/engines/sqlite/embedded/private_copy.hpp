// A database file worked on as a copy that nobody else sees.
#pragma once

#include <filesystem>
#include <memory>

#include "platform/adodb/session/provider.hpp"

namespace ADODB::sqlite {

// Serves what MakeProvider(baseFolder) serves, each session on a copy of its own of the database file. The
// original is read in one read transaction and not written to: others read and write it meanwhile, but for
// one that has a rollback journal, whose writers wait while it is copied. The copy is made in a new folder
// (0700) in `temporary` and loses its name, and the folder, as soon as it is open.
std::shared_ptr<engine::Provider> MakeCopyProvider(std::filesystem::path baseFolder,
                                                   std::filesystem::path temporary);

}  // namespace ADODB::sqlite
