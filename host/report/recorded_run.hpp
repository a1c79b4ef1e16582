// Runs as their journals tell of them.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "effects/journal_reader.hpp"

namespace orvane::host {

enum class Ending {
  Failed,      // with another exit code than 0 and 1, or its journal cannot be read
  Unfinished,  // killed, or not ended yet
  Warned,      // something failed on the way
  Clean
};

struct RecordedRun {
  std::string run;      // its name
  std::string job;      // the class name
  std::string started;  // "YYYY-MM-DD HH:MM:SS" in UTC
  Ending ending = Ending::Unfinished;
  std::optional<effects::JournalSummary> summary;  // nothing: the journal cannot be read
  std::string problem;                             // why it cannot
};

// The runs of these names in the order of time; all of the folder when there are no names. Raises UsageError
// for a name that is none, or has no journal here.
std::vector<RecordedRun> ReadRuns(const std::filesystem::path& journals,
                                  const std::vector<std::string>& names);

// What needs somebody's attention first, then the youngest first.
std::vector<RecordedRun> FailuresFirst(std::vector<RecordedRun> runs);

// "finished", "exit 70", "unfinished", "unreadable".
std::string EndingText(const RecordedRun& run);
// What took place, by kind; empty where nothing is known.
std::map<std::string, std::uint64_t> TotalsOf(const RecordedRun& run);
// Why a run needs attention, in a few words; empty for one that does not.
std::string TroubleOf(const RecordedRun& run);

// "1,204"
std::string Grouped(std::uint64_t number);
// "91.2 s", "12 min 4 s"
std::string Duration(double seconds);

std::string ReportText(const std::vector<RecordedRun>& runs, bool inDetail);
// One object a line.
std::string ReportJson(const std::vector<RecordedRun>& runs);
// A page without scripts that needs nothing beside it. `suite` is shown in its title.
std::string ReportHtml(const std::vector<RecordedRun>& runs, std::string_view suite);

}  // namespace orvane::host
