// Reads journals, whole or by their ends.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <stdexcept>
#include <string>

namespace effects {

// A journal that cannot be read, or not to its end: what() says which file, where and why.
class JournalError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Calls `use` for each line of the journal in their order, the members as they stand there. Answers whether
// the journal is whole; false when its last line was cut off, which is left out then: the run was killed, or
// is writing it now.
// FAILS: JournalError for a file that cannot be read, a line that is no journal's, a line of another version,
// of another run, or out of its order. What `use` raises passes through.
bool ReadJournal(const std::filesystem::path& file,
                 const std::function<void(const nlohmann::ordered_json& line)>& use);

// What the first and the last line of a journal say.
struct JournalSummary {
  // Of run.start.
  std::string run;
  std::string job;
  bool preview = false;
  std::string at;       // "YYYY-MM-DD HH:MM:SS", local
  std::string started;  // UTC
  std::int64_t process = 0;
  std::string host;
  std::string version;

  // Of run.end.
  struct End {
    int exit = 0;
    double seconds = 0;
    // By kind and subject (the table, the folder, the component; empty where the kind has none), what took
    // place; and by kind what failed, or may have taken place all the same.
    std::map<std::string, std::map<std::string, std::uint64_t>> done;
    std::map<std::string, std::uint64_t> failed;
    std::map<std::string, std::uint64_t> unknown;
    std::uint64_t logTexts = 0;
    std::uint64_t knownLogTexts = 0;
  };
  // Nothing: the run was killed, or has not ended yet; the last line is uncertain then.
  std::optional<End> end;
  // What the error log got last before the end, if that was the last line before it: why a run was stopped.
  std::string lastLogText;
};

// FAILS: as ReadJournal, of the lines that it reads.
JournalSummary SummaryOf(const std::filesystem::path& file);

}  // namespace effects
