// Files of lines that jobs hand over to programs outside.
#pragma once

#include <chrono>
#include <filesystem>
#include <string_view>

namespace suite {

// How long a program that empties an outbox may keep it locked. One that hangs must not block a run.
inline constexpr std::chrono::seconds kOutboxPatience{30};

// Appends the line to the file as a whole and durably; the file's folder is made when it is missing (one
// level). Jobs and the programs that empty the file may work side by side when they take a lock on it
// (flock), for which a job waits as long as `patience`. When the line cannot be written the file is left as
// it was and 75 is raised, naming the file and the reason, with `errorSource` as its source.
void AppendToOutbox(const std::filesystem::path& file, std::string_view line, std::string_view errorSource,
                    std::chrono::milliseconds patience = kOutboxPatience);

}  // namespace suite
