// What the libraries behind a mail need by themselves.
#pragma once

#include <filesystem>

#include "platform/cdo/registration.hpp"

namespace orvane_bench {

// Seconds to load the sheet and render the document `count` times, as the job does for each mail.
double RenderSeconds(const std::filesystem::path& sheet, int count);

// Seconds to send the same mail, with its page, `count` times.
double SendSeconds(const CDO::Settings& settings, const std::filesystem::path& page, int count);

}  // namespace orvane_bench
