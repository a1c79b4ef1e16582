#include "host/preview_summary.hpp"

#include <algorithm>
#include <cstdio>
#include <optional>
#include <string_view>

#include "effects/journal_files.hpp"
#include "effects/journal_reader.hpp"
#include "platform/automation/iso_text.hpp"
#include "platform/base/text.hpp"
#include "run/recording.hpp"

namespace orvane::host {
namespace {

struct Words {
  std::string_view op;
  const char* doing;  // "delete"
  const char* what;   // "rows of"
};

// What people want to know first stands first. Rows are rows, whether one statement took one or many.
constexpr Words kWords[] = {{"row.delete", "delete", "rows of"},
                            {"row.update", "update", "rows of"},
                            {"row.insert", "insert", "rows into"},
                            {"file.delete", "delete", "files in"},
                            {"folder.delete", "delete", "folders in"},
                            {"file.write", "write", "files in"},
                            {"document.save", "save", "documents in"},
                            {"folder.create", "make", "folders in"},
                            {"mail.send", "send", "mails"},
                            {"erp.call", "call", "times"},
                            {"event", "tell", "events of"},
                            {"shared.delete", "delete", "shared items of"},
                            {"shared.store", "store", "shared files in"},
                            {"shared.fetch", "fetch", "shared files from"}};

std::string_view OneRow(std::string_view op) {
  if (op == "rows.delete") return "row.delete";
  if (op == "rows.update") return "row.update";
  if (op == "rows.insert") return "row.insert";
  return op;
}

RunCounts CountsOf(const effects::Counts& counts) {
  RunCounts sums;
  for (const auto& [key, count] : counts.All()) {
    if (count.done > 0) sums[{std::string(OneRow(key.first)), key.second}] += count.done;
  }
  return sums;
}

// How many there were of what is deleted.
std::optional<std::uint64_t> HeldBefore(const PreviewedJob& previewed, std::string_view op,
                                        const std::string& subject) {
  using Of = effects::Deletions::Of;
  if (op == "row.delete") return previewed.Held(Of::Rows, subject);
  if (op == "file.delete") return previewed.Held(Of::Files, subject);
  if (op == "folder.delete") return previewed.Held(Of::Folders, subject);
  if (op == "shared.delete") return previewed.Held(Of::Shared, subject);
  return std::nullopt;
}

std::string Grouped(std::uint64_t number) {
  std::string digits = std::to_string(number);
  for (std::size_t at = digits.size(); at > 3;) digits.insert(at -= 3, ",");
  return digits;
}

std::string Share(std::uint64_t part, std::uint64_t whole) {
  if (whole == 0) return {};
  char text[32];
  std::snprintf(text, sizeof text, " (%.1f %%)",
                100.0 * static_cast<double>(part) / static_cast<double>(whole));
  return text;
}

std::string Comparison(const std::pair<std::string, std::string>& key,
                       const std::vector<RunCounts>& lastRuns) {
  if (lastRuns.empty()) return {};
  std::vector<std::uint64_t> numbers;
  for (const RunCounts& run : lastRuns) {
    const auto found = run.find(key);
    numbers.push_back(found == run.end() ? 0 : found->second);
  }
  std::sort(numbers.begin(), numbers.end());
  const std::string runs =
      numbers.size() == 1 ? "the last run" : "the last " + std::to_string(numbers.size()) + " runs";
  const std::string range = numbers.front() == numbers.back()
                                ? Grouped(numbers.front())
                                : Grouped(numbers.front()) + " to " + Grouped(numbers.back());
  return "; " + runs + ": " + range;
}

}  // namespace

std::vector<RunCounts> LastRunsOf(const SuiteHome& home, const JobInfo& job) {
  constexpr std::size_t kMostRuns = 10;
  std::vector<RunCounts> runs;
  const std::vector<effects::JournalFile> journals = effects::JournalsIn(home.Journals());
  for (auto journal = journals.rbegin(); journal != journals.rend() && runs.size() < kMostRuns; ++journal) {
    if (journal->job != ClassName(job)) continue;
    try {
      const effects::JournalSummary summary = effects::SummaryOf(journal->path);
      if (!summary.end) continue;
      RunCounts& counts = runs.emplace_back();
      for (const auto& [op, subjects] : summary.end->done) {
        for (const auto& [subject, count] : subjects) counts[{std::string(OneRow(op)), subject}] += count;
      }
    } catch (const effects::JournalError&) {
      // There is nothing to compare with.
    }
  }
  std::reverse(runs.begin(), runs.end());
  return runs;
}

void PrintSummary(const PreviewedJob& previewed, const std::vector<RunCounts>& lastRuns, std::ostream& out) {
  out << previewed.job->progId << " at " << automation::IsoText(previewed.at.WithoutFraction())
      << (previewed.finished ? "" : ", would end without its stop line") << '\n';
  const RunCounts counts = CountsOf(previewed.counts);
  bool nothing = true;
  for (const Words& words : kWords) {
    for (const auto& [key, count] : counts) {
      if (key.first != words.op) continue;
      nothing = false;
      out << "  would " << words.doing << ' ' << Grouped(count);
      const std::optional<std::uint64_t> held = HeldBefore(previewed, key.first, key.second);
      if (held) out << " of " << Grouped(*held);
      out << ' ' << words.what;
      if (!key.second.empty()) out << ' ' << base::WithControlsShown(key.second);
      if (held) out << Share(count, *held);
      out << Comparison(key, lastRuns) << '\n';
    }
  }
  if (nothing) out << "  would change nothing\n";
  for (const std::string& warning : previewed.warnings)
    out << "  warning: " << base::WithControlsShown(warning) << '\n';
  const std::uint64_t more = previewed.counts.LogTexts();
  if (more > previewed.warnings.size())
    out << "  and " << Grouped(more - previewed.warnings.size()) << " more\n";
}

}  // namespace orvane::host
