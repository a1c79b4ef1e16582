// What the libraries behind a mail need by themselves.
#pragma once

#include <filesystem>

#include "platform/cdo/registration.hpp"

namespace orvane_bench {

// Loads the sheet and renders the document `count` times, as the job does for each mail.
void RenderPages(const std::filesystem::path& sheet, int count);

// Sends the same mail, with its page, `count` times.
void SendMails(const CDO::Settings& settings, const std::filesystem::path& page, int count);

}  // namespace orvane_bench
