// The journals of a suite, by their names.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace effects {

inline constexpr std::string_view kJournalEnding = ".jsonl";

struct JournalFile {
  std::filesystem::path path;
  std::string run;  // "YYYYMMDDTHHMMSSZ-pid-Class"
  std::chrono::system_clock::time_point begin;
  std::int64_t process = 0;
  std::string job;  // the class name
};

// What the name of a run says; nothing for a text that is none. The path is left empty.
std::optional<JournalFile> ParseRunName(std::string_view run);

// The journals in the folder in the order of time; none where there is no such folder.
std::vector<JournalFile> JournalsIn(const std::filesystem::path& folder);

}  // namespace effects
