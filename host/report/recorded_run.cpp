#include "host/report/recorded_run.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <ctime>

#include "effects/journal_files.hpp"
#include "host/arguments.hpp"
#include "run/exit_codes.hpp"

namespace orvane::host {
namespace {

std::string Utc(std::chrono::system_clock::time_point moment) {
  const std::time_t seconds = std::chrono::system_clock::to_time_t(moment);
  std::tm parts{};
  gmtime_r(&seconds, &parts);
  std::array<char, 32> text{};
  std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &parts);
  return text.data();
}

std::uint64_t Sum(const std::map<std::string, std::uint64_t>& numbers) {
  std::uint64_t sum = 0;
  for (const auto& [name, number] : numbers) sum += number;
  return sum;
}

Ending EndingOf(const effects::JournalSummary& summary) {
  if (!summary.end) return Ending::Unfinished;
  const effects::JournalSummary::End& end = *summary.end;
  if (end.exit != kOk && end.exit != kErrorsLogged) return Ending::Failed;
  const bool clean = end.exit == kOk && end.logTexts == 0 && end.failed.empty() && end.unknown.empty();
  return clean ? Ending::Clean : Ending::Warned;
}

RecordedRun Read(const effects::JournalFile& file) {
  RecordedRun run{file.run, file.job, Utc(file.begin), Ending::Failed, std::nullopt, {}};
  try {
    run.summary = effects::SummaryOf(file.path);
    run.ending = EndingOf(*run.summary);
  } catch (const effects::JournalError& error) {
    run.problem = error.what();
  }
  return run;
}

}  // namespace

std::vector<RecordedRun> ReadRuns(const std::filesystem::path& journals,
                                  const std::vector<std::string>& names) {
  const std::vector<effects::JournalFile> files = effects::JournalsIn(journals);
  for (const std::string& name : names) {
    const bool known = std::any_of(files.begin(), files.end(),
                                   [&name](const effects::JournalFile& file) { return file.run == name; });
    if (!known) throw UsageError("no journal of a run " + name + " in " + journals.string());
  }
  std::vector<RecordedRun> runs;
  for (const effects::JournalFile& file : files) {
    if (names.empty() || std::find(names.begin(), names.end(), file.run) != names.end()) {
      runs.push_back(Read(file));
    }
  }
  return runs;
}

std::vector<RecordedRun> FailuresFirst(std::vector<RecordedRun> runs) {
  std::reverse(runs.begin(), runs.end());
  std::stable_sort(runs.begin(), runs.end(), [](const RecordedRun& one, const RecordedRun& other) {
    return one.ending < other.ending;
  });
  return runs;
}

std::string EndingText(const RecordedRun& run) {
  if (!run.summary) return "unreadable";
  if (!run.summary->end) return "unfinished";
  const int code = run.summary->end->exit;
  return code == kOk ? "finished" : "exit " + std::to_string(code);
}

std::map<std::string, std::uint64_t> TotalsOf(const RecordedRun& run) {
  std::map<std::string, std::uint64_t> totals;
  if (!run.summary || !run.summary->end) return totals;
  for (const auto& [op, subjects] : run.summary->end->done) totals[op] = Sum(subjects);
  return totals;
}

std::string TroubleOf(const RecordedRun& run) {
  if (!run.summary) return run.problem;
  if (!run.summary->end)
    return "no last line: the run was killed, or has not ended; its last effect is uncertain";
  const effects::JournalSummary::End& end = *run.summary->end;
  std::string text;
  const auto add = [&text](std::uint64_t count, const std::string& what) {
    if (count > 0) text += (text.empty() ? "" : ", ") + what + Grouped(count);
  };
  add(end.logTexts, "entries in the error log: ");
  add(Sum(end.failed), "failed effects: ");
  add(Sum(end.unknown), "uncertain effects: ");
  if (run.ending == Ending::Failed && !run.summary->lastLogText.empty()) {
    text += (text.empty() ? "" : "; ") + run.summary->lastLogText;
  }
  return text;
}

std::string Grouped(std::uint64_t number) {
  std::string text = std::to_string(number);
  for (std::size_t at = text.size(); at > 3; at -= 3) text.insert(at - 3, ",");
  return text;
}

std::string Duration(double seconds) {
  std::array<char, 64> text{};
  if (seconds < 120) {
    std::snprintf(text.data(), text.size(), "%.1f s", seconds);
  } else {
    const auto whole = static_cast<long long>(std::llround(seconds));
    std::snprintf(text.data(), text.size(), "%lld min %lld s", whole / 60, whole % 60);
  }
  return text.data();
}

}  // namespace orvane::host
