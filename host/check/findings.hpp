// What a check of a suite has found.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orvane::host {

enum class Severity {
  Note,     // worth knowing
  Warning,  // a run does its work, but perhaps not as meant
  Error     // a run cannot do its work
};

struct Finding {
  Severity severity = Severity::Note;
  std::string_view id;  // stays the same when the words change
  std::string where;
  std::string what;
  std::string advice;        // what to do; may be empty for a note
  bool unavailable = false;  // of an error: a service does not answer; otherwise the configuration is wrong
};

// In the order in which they were found.
class Findings {
 public:
  void Note(std::string_view id, std::string where, std::string what, std::string advice = {});
  void Warn(std::string_view id, std::string where, std::string what, std::string advice);
  void Fail(std::string_view id, std::string where, std::string what, std::string advice);
  void FailService(std::string_view id, std::string where, std::string what, std::string advice);

  const std::vector<Finding>& All() const { return all_; }

 private:
  std::vector<Finding> all_;
};

// "error: WHERE: WHAT; ADVICE", on one line, or a JSON object on one.
std::string TextLine(const Finding& finding);
std::string JsonLine(const Finding& finding);

// "5, 7, 9 and 12 more": the first few of many.
std::string FirstOf(const std::vector<std::string>& items);

}  // namespace orvane::host
