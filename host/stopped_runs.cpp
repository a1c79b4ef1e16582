#include "host/stopped_runs.hpp"

#include <algorithm>
#include <cstdio>

#include "effects/journal_reader.hpp"
#include "run/exit_codes.hpp"

namespace orvane::host {
namespace {

// A run log's first line is written a moment after the journal's, which says when that was.
constexpr std::int64_t kLatest = 60 * automation::kMicrosecondsPerSecond;

std::optional<automation::DateTime> Parsed(const std::string& at) {
  automation::DateTimeParts parts;
  if (std::sscanf(at.c_str(), "%d-%d-%d %d:%d:%d", &parts.year, &parts.month, &parts.day, &parts.hour,
                  &parts.minute, &parts.second) != 6 ||
      !automation::DateTime::IsValid(parts)) {
    return std::nullopt;
  }
  return automation::DateTime::FromParts(parts);
}

std::string OneLine(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; },
      ' ');
  return text;
}

std::optional<std::string> HowStopped(const effects::JournalSummary& summary) {
  if (!summary.end) return std::nullopt;
  const int exit = summary.end->exit;
  if (exit == kTryAgain && summary.lastLogText.empty()) return "stopped on request";
  const bool wasStopped = exit == kTryAgain || exit == kUnavailable || exit == kUnfinished || exit == kLimit;
  if (!wasStopped || summary.lastLogText.empty()) return std::nullopt;
  return "stopped: " + OneLine(summary.lastLogText);
}

}  // namespace

StoppedRuns::StoppedRuns(const std::filesystem::path& folder) : journals_(effects::JournalsIn(folder)) {}

std::optional<std::string> StoppedRuns::HowStopped(const JobInfo& job, automation::DateTime began) const {
  for (auto journal = journals_.rbegin(); journal != journals_.rend(); ++journal) {
    if (journal->job != ClassName(job)) continue;
    try {
      const effects::JournalSummary summary = effects::SummaryOf(journal->path);
      const std::optional<automation::DateTime> at = Parsed(summary.at);
      if (!at || *at > began) continue;
      if (began.UnixMicroseconds() - at->UnixMicroseconds() > kLatest) return std::nullopt;
      return orvane::host::HowStopped(summary);
    } catch (const effects::JournalError&) {
      // Another one may be the run's.
    }
  }
  return std::nullopt;
}

}  // namespace orvane::host
