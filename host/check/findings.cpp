#include "host/check/findings.hpp"

#include <algorithm>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <utility>

namespace orvane::host {
namespace {

std::string_view NameOf(Severity severity) {
  switch (severity) {
    case Severity::Note:
      return "note";
    case Severity::Warning:
      return "warning";
    case Severity::Error:
      return "error";
  }
  return {};
}

}  // namespace

void Findings::Note(std::string_view id, std::string where, std::string what, std::string advice) {
  all_.push_back({Severity::Note, id, std::move(where), std::move(what), std::move(advice), false});
}

void Findings::Warn(std::string_view id, std::string where, std::string what, std::string advice) {
  all_.push_back({Severity::Warning, id, std::move(where), std::move(what), std::move(advice), false});
}

void Findings::Fail(std::string_view id, std::string where, std::string what, std::string advice) {
  all_.push_back({Severity::Error, id, std::move(where), std::move(what), std::move(advice), false});
}

void Findings::FailService(std::string_view id, std::string where, std::string what, std::string advice) {
  all_.push_back({Severity::Error, id, std::move(where), std::move(what), std::move(advice), true});
}

std::string TextLine(const Finding& finding) {
  std::string line = std::string(NameOf(finding.severity)) + ": " + finding.where + ": " + finding.what;
  if (!finding.advice.empty()) line += "; " + finding.advice;
  // Names and messages of others are in it.
  std::replace_if(
      line.begin(), line.end(), [](char c) { return (c >= 0 && c < ' ') || c == '\x7F'; }, ' ');
  return line + '\n';
}

std::string JsonLine(const Finding& finding) {
  nlohmann::ordered_json line = {{"v", 1},
                                 {"severity", NameOf(finding.severity)},
                                 {"id", finding.id},
                                 {"where", finding.where},
                                 {"what", finding.what},
                                 {"do", finding.advice}};
  if (finding.severity == Severity::Error) line["unavailable"] = finding.unavailable;
  constexpr int kNoIndent = -1;
  return line.dump(kNoIndent, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + '\n';
}

std::string FirstOf(const std::vector<std::string>& items) {
  constexpr std::size_t kShown = 5;
  std::string text;
  for (std::size_t i = 0; i < std::min(items.size(), kShown); ++i) text += (i == 0 ? "" : ", ") + items[i];
  if (items.size() > kShown) text += " and " + std::to_string(items.size() - kShown) + " more";
  return text;
}

}  // namespace orvane::host
