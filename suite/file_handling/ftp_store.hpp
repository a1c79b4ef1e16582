// A shared place behind an FTP server.
#pragma once

#include <memory>

#include "suite/file_handling/ftp_session.hpp"
#include "suite/file_handling/shared_store.hpp"

namespace OrvCommonMTS {

// Connects. Raises libcurl's message for a server that is down or refuses the user, and 76 when the root
// folder of the address does not exist.
std::unique_ptr<SharedStore> OpenFtpStore(const FtpAddress& address, const FtpOptions& options);

}  // namespace OrvCommonMTS
