// The history of a question, taken apart.
//
// Q_TEXT and A_TEXT hold one entry after another, each behind its separator: one character, the entry's
// date-time in 23 characters, the largest unit first, and what was written.
#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "common/connections.hpp"
#include "common/error_reporting.hpp"
#include "common/localized_text.hpp"
#include "common/text_helpers.hpp"
#include "jobs/solve/known_user.hpp"
#include "jobs/solve/solve_on_no_response.hpp"
#include "platform/automation/error.hpp"
#include "platform/automation/runtime.hpp"

namespace OrvaneProcess {
namespace {

constexpr std::string_view kQuestionSeparator = "\x01\x02\x03\x04";
constexpr std::string_view kQuestionSuffix = " Q";
constexpr std::string_view kAnswerSuffix = " A";
constexpr std::size_t kDateFirst = 2;
constexpr std::size_t kTextFirst = 25;
constexpr int kDateAndTime = 3;

// Where character `number`, counted from 1, begins in a UTF-8 text; the text's end when it is shorter.
std::size_t CharacterOffset(std::string_view text, std::size_t number) {
  std::size_t seen = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool begins = (static_cast<unsigned char>(text[i]) & 0xC0) != 0x80;
    if (begins && ++seen == number) return i;
  }
  return text.size();
}

// What stands before the first separator belongs to no entry.
std::vector<std::string_view> SplitEntries(std::string_view text, std::string_view separator) {
  std::vector<std::string_view> entries;
  std::size_t at = text.find(separator);
  while (at != std::string_view::npos) {
    const std::size_t begin = at + separator.size();
    at = text.find(separator, begin);
    entries.push_back(text.substr(begin, at == std::string_view::npos ? at : at - begin));
  }
  return entries;
}

void AddEntries(std::string_view text, std::string_view separator, std::string_view suffix,
                std::int32_t& count, std::vector<HistoryEntry>& history) {
  for (const std::string_view entry : SplitEntries(text, separator)) {
    if (count == std::numeric_limits<std::int32_t>::max()) {
      throw automation::Error(automation::ErrorNumber::Overflow);
    }
    const std::size_t date = CharacterOffset(entry, kDateFirst);
    const std::size_t body = CharacterOffset(entry, kTextFirst);
    history.push_back({std::string(entry.substr(date, body - date)) + std::string(suffix),
                       std::string(entry.substr(body))});
    ++count;
  }
}

// The stored form carries fractions of a second, which no reader wants to see; a text that is no date is
// shown as it stands.
std::string ReadableDate(const std::string& stored, std::int32_t language) {
  const std::size_t time = stored.find(':');
  const std::size_t fraction = time == std::string::npos ? time : stored.find('.', time);
  try {
    const automation::DateTime date =
        automation::CurrentLocale().ParseDateTime(std::string_view(stored).substr(0, fraction));
    return OrvaneUtilities::GetDateText(date, kDateAndTime, language);
  } catch (const automation::Error&) {
    return stored;
  }
}

std::string Heading(const std::string& key, std::int32_t language) {
  std::string_view label;
  std::string heading;
  if (key.ends_with('A')) {
    label = "LBLQX3429";
    heading = "<b><font color=green>";
  } else if (key.ends_with('Q')) {
    label = "LBLQX3388";
    heading = "<b><font color=red>";
  } else {
    return key;
  }
  const std::string date = key.substr(0, key.size() - kQuestionSuffix.size());
  heading += OrvaneUtilities::GetI18NText(label, language) + " : " + ReadableDate(date, language);
  return heading + "</font></b>";
}

}  // namespace

void SolveOnNoResponseJob::SeparateData(std::int32_t questionId, std::int32_t& count,
                                        std::vector<HistoryEntry>& history) {
  ADODB::ConnectionPtr connection;
  ADODB::RecordsetPtr question;
  count = 0;
  history.clear();
  try {
    connection = OrvaneUtilities::GetOrvaneConnection();
    question = automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
    ADODB::Statement sql = "select * from QUESTIONS where Q_ID = ";
    sql += ADODB::SqlValue(questionId);
    question->Open(sql, connection, ADODB::CursorType::ForwardOnly, ADODB::LockType::ReadOnly,
                   ADODB::kOptionsUnspecified);
    if (!question->Eof()) {
      const std::string questions = automation::ToTextOrEmpty(question->Value("Q_TEXT"));
      const std::string answers = automation::ToTextOrEmpty(question->Value("A_TEXT"));
      const std::int32_t language =
          KnownUser(automation::ToText(question->Value("Q_ORIGINATOR")))->LanguageID();
      AddEntries(questions, kQuestionSeparator, kQuestionSuffix, count, history);
      AddEntries(answers, kAnswerSeparator, kAnswerSuffix, count, history);
      // The dates sort as texts; at the same date the suffix puts an answer before a question.
      std::stable_sort(history.begin(), history.end(),
                       [](const HistoryEntry& a, const HistoryEntry& b) { return a.heading < b.heading; });
      for (HistoryEntry& entry : history) entry.heading = Heading(entry.heading, language);
    }
    OrvaneUtilities::CloseRecordset(question);
    OrvaneUtilities::CloseConnection(connection);
  } catch (...) {
    OrvaneUtilities::CloseRecordset(question);
    OrvaneUtilities::CloseConnection(connection);
    OrvaneUtilities::ReportHandledError("OrvaneProcess.SolveOnNoResponse.SeparateData");
  }
}

}  // namespace OrvaneProcess
