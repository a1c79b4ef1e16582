#include <nlohmann/json.hpp>

#include "host/report/recorded_run.hpp"

namespace orvane::host {
namespace {

std::string Printable(std::string text) {
  for (char& c : text) {
    if ((c >= 0 && c < ' ') || c == '\x7F') c = ' ';
  }
  return text;
}

}  // namespace

std::string ReportText(const std::vector<RecordedRun>& runs, bool inDetail) {
  std::string text;
  for (const RecordedRun& run : runs) {
    text += run.run + "  " + EndingText(run);
    if (run.summary && run.summary->end) text += ", " + Duration(run.summary->end->seconds);
    for (const auto& [op, count] : TotalsOf(run)) text += ", " + op + " " + Grouped(count);
    if (const std::string trouble = TroubleOf(run); !trouble.empty()) text += ": " + Printable(trouble);
    text += '\n';
    if (!inDetail || !run.summary || !run.summary->end) continue;
    for (const auto& [op, subjects] : run.summary->end->done) {
      for (const auto& [subject, count] : subjects) {
        text += "  " + op + (subject.empty() ? "" : "  " + Printable(subject)) + "  " + Grouped(count) + '\n';
      }
    }
  }
  return text;
}

std::string ReportJson(const std::vector<RecordedRun>& runs) {
  using Json = nlohmann::ordered_json;
  std::string text;
  for (const RecordedRun& run : runs) {
    Json line = {
        {"v", 1}, {"run", run.run}, {"job", run.job}, {"started", run.started}, {"ending", EndingText(run)}};
    if (!run.summary) line["problem"] = run.problem;
    if (run.summary) {
      line["pid"] = run.summary->process;
      line["host"] = run.summary->host;
      line["version"] = run.summary->version;
    }
    if (run.summary && run.summary->end) {
      const effects::JournalSummary::End& end = *run.summary->end;
      line["exit"] = end.exit;
      line["seconds"] = end.seconds;
      line["counts"] = end.done;
      line["failed"] = end.failed;
      line["unknown"] = end.unknown;
      line["log"] = end.logTexts;
      line["known"] = end.knownLogTexts;
      if (!run.summary->lastLogText.empty()) line["why"] = run.summary->lastLogText;
    }
    constexpr int kNoIndent = -1;
    text += line.dump(kNoIndent, ' ', false, Json::error_handler_t::replace) + '\n';
  }
  return text;
}

}  // namespace orvane::host
