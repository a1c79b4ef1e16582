#include <algorithm>
#include <set>

#include "host/markup.hpp"
#include "host/report/recorded_run.hpp"
#include "platform/base/text.hpp"

namespace orvane::host {
namespace {

constexpr std::string_view kStyle = R"(
:root { color-scheme: light dark; --line: #c8c8c8; --bad: #b00020; --warn: #8a5a00; }
@media (prefers-color-scheme: dark) { :root { --line: #555; --bad: #ff8a80; --warn: #e5b55c; } }
body { font: 1rem/1.5 system-ui, sans-serif; margin: 0 auto; max-width: 70rem; padding: 1rem; }
h1 { font-size: 1.5rem; } h2 { font-size: 1.2rem; margin-top: 2rem; }
table { border-collapse: collapse; width: 100%; }
caption { text-align: left; font-weight: bold; padding: .3rem 0; }
th, td { border-bottom: 1px solid var(--line); padding: .3rem .6rem .3rem 0; text-align: left; vertical-align: top;
  overflow-wrap: break-word; }
td[data-label="Attention"], td[data-label="On"] { overflow-wrap: anywhere; }
td.number { text-align: right; font-variant-numeric: tabular-nums; }
.Failed, .Unfinished { color: var(--bad); font-weight: bold; } .Warned { color: var(--warn); font-weight: bold; }
meter { width: 100%; min-width: 4rem; }
summary { cursor: pointer; padding: .3rem 0; }
@media (max-width: 40rem) {
  thead { position: absolute; left: -100vw; }
  tr { display: block; border-bottom: 1px solid var(--line); padding: .4rem 0; }
  th, td, td.number { display: block; border: 0; padding: 0; text-align: left; overflow-wrap: anywhere; }
  td:empty { display: none; }
  td[data-label]::before { content: attr(data-label) ": "; font-weight: bold; }
}
)";

std::string Escaped(std::string_view text) {
  std::string shown(text);
  std::replace_if(shown.begin(), shown.end(), base::IsControl, ' ');
  return MarkupText(shown);
}

std::string_view ClassOf(Ending ending) {
  switch (ending) {
    case Ending::Failed:
      return "Failed";
    case Ending::Unfinished:
      return "Unfinished";
    case Ending::Warned:
      return "Warned";
    case Ending::Clean:
      return "Clean";
  }
  return {};
}

std::uint64_t Effects(const RecordedRun& run) {
  std::uint64_t sum = 0;
  for (const auto& [op, count] : TotalsOf(run)) sum += count;
  return sum;
}

// How one run's effects compare with the most that a run of the page had.
std::string Meter(std::uint64_t effects, std::uint64_t most) {
  return "<meter max=\"" + std::to_string(std::max<std::uint64_t>(most, 1)) + "\" value=\"" +
         std::to_string(effects) + "\">" + Grouped(effects) + " effects</meter>";
}

std::string RunRow(const RecordedRun& run, std::uint64_t most) {
  const auto cell = [](std::string_view label, const std::string& content, std::string_view kind = {}) {
    return "<td data-label=\"" + std::string(label) + "\"" +
           (kind.empty() ? "" : " class=\"" + std::string(kind) + "\"") + ">" + content + "</td>";
  };
  const bool ended = run.summary && run.summary->end;
  return "<tr><th scope=\"row\">" + Escaped(run.started) + "</th>" + cell("Job", Escaped(run.job)) +
         cell("Ending", Escaped(EndingText(run)), ClassOf(run.ending)) +
         cell("Took", ended ? Escaped(Duration(run.summary->end->seconds)) : "unknown", "number") +
         cell("Effects", ended ? Grouped(Effects(run)) : "unknown", "number") +
         cell("Chart", ended ? Meter(Effects(run), most) : "none") +
         cell("Attention", Escaped(TroubleOf(run))) + "</tr>\n";
}

std::string Table(const std::vector<RecordedRun>& runs, const std::string& caption, std::uint64_t most) {
  std::string text =
      "<table>\n<caption>" + Escaped(caption) +
      "</caption>\n<thead><tr><th scope=\"col\">Started (UTC)</th><th scope=\"col\">Job</th><th "
      "scope=\"col\">Ending</th><th scope=\"col\">Took</th><th scope=\"col\">Effects</th><th "
      "scope=\"col\">Chart</th><th scope=\"col\">Attention</th></tr></thead>\n<tbody>\n";
  for (const RecordedRun& run : runs) text += RunRow(run, most);
  return text + "</tbody>\n</table>\n";
}

std::string Counts(const RecordedRun& run) {
  std::string text = "<table>\n<caption>" + Escaped(run.run) +
                     "</caption>\n<thead><tr><th scope=\"col\">Effect</th><th scope=\"col\">On</th><th "
                     "scope=\"col\">Number</th></tr></thead>\n<tbody>\n";
  for (const auto& [op, subjects] : run.summary->end->done) {
    for (const auto& [subject, count] : subjects) {
      text += "<tr><th scope=\"row\">" + Escaped(op) + "</th><td data-label=\"On\">" + Escaped(subject) +
              "</td><td data-label=\"Number\" class=\"number\">" + Grouped(count) + "</td></tr>\n";
    }
  }
  return text + "</tbody>\n</table>\n";
}

}  // namespace

std::string ReportHtml(const std::vector<RecordedRun>& runs, std::string_view suite) {
  std::uint64_t most = 0;
  std::set<std::string> jobs;
  std::vector<RecordedRun> troubled;
  for (const RecordedRun& run : runs) {
    most = std::max(most, Effects(run));
    jobs.insert(run.job);
    if (run.ending != Ending::Clean) troubled.push_back(run);
  }
  const std::string title = "Runs of the suite in " + Escaped(suite);
  std::string text =
      "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n<meta name=\"viewport\" "
      "content=\"width=device-width, initial-scale=1\">\n<title>" +
      title + "</title>\n<style>" + std::string(kStyle) + "</style>\n</head>\n<body>\n<main>\n<h1>" + title +
      "</h1>\n<p>" + Grouped(runs.size()) + " runs, " + Grouped(troubled.size()) +
      " of them need attention.</p>\n";
  if (!troubled.empty()) {
    text += "<h2>Needs attention</h2>\n" + Table(FailuresFirst(troubled), "Failures first", most);
  }
  for (const std::string& job : jobs) {
    std::vector<RecordedRun> of;
    std::copy_if(runs.rbegin(), runs.rend(), std::back_inserter(of),
                 [&job](const RecordedRun& run) { return run.job == job; });
    text += "<h2>" + Escaped(job) + "</h2>\n<details>\n<summary>" + Grouped(of.size()) +
            (of.size() == 1 ? " run" : " runs") + "</summary>\n" + Table(of, "The youngest first", most);
    for (const RecordedRun& run : of) {
      if (Effects(run) > 0) {
        text += "<details>\n<summary>" + Escaped(run.started) + ": " + Grouped(Effects(run)) +
                " effects</summary>\n" + Counts(run) + "</details>\n";
      }
    }
    text += "</details>\n";
  }
  return text + "</main>\n</body>\n</html>\n";
}

}  // namespace orvane::host
