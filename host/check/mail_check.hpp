// The templates of the mails and the style sheets that they are made with.
#pragma once

#include <filesystem>

#include "host/check/findings.hpp"
#include "platform/adodb/connection.hpp"

namespace orvane::host {

// The rows of EMAIL, and the sheet of each, prepared by the classes of the current runtime. `data` is the
// data folder, in which pages are made.
void CheckMails(const ADODB::ConnectionPtr& suite, const std::filesystem::path& home,
                const std::filesystem::path& data, Findings& findings);

}  // namespace orvane::host
