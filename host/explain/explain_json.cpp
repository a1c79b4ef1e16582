#include "effects/journal_line.hpp"
#include "effects/json_text.hpp"
#include "host/explain/explain_report.hpp"
#include "platform/automation/iso_text.hpp"
#include "run/exit_codes.hpp"
#include "run/job_table.hpp"

namespace orvane::host {
namespace {

// Writes objects, one a line.
class Lines {
 public:
  Lines& Begin(std::string_view what) {
    text_ += R"({"v":1)";
    return Text("what", what);
  }
  void End() { text_ += "}\n"; }

  Lines& Name(std::string_view name) {
    text_ += ',';
    effects::AppendJsonText(text_, name);
    text_ += ':';
    return *this;
  }
  Lines& Text(std::string_view name, std::string_view text) {
    Name(name);
    effects::AppendJsonText(text_, text);
    return *this;
  }
  Lines& Flag(std::string_view name, bool flag) {
    Name(name);
    text_ += flag ? "true" : "false";
    return *this;
  }
  Lines& Row(std::string_view name, const ADODB::NamedRow& row) {
    Name(name);
    effects::AppendJson(text_, row);
    return *this;
  }
  template <class Items, class Append>
  Lines& List(std::string_view name, const Items& items, const Append& append) {
    Name(name);
    text_ += '[';
    bool first = true;
    for (const auto& item : items) {
      if (!first) text_ += ',';
      first = false;
      append(text_, item);
    }
    text_ += ']';
    return *this;
  }
  std::string& Raw() { return text_; }

 private:
  std::string text_;
};

void AppendReading(std::string& to, const Reading& reading) {
  to += R"({"statement":)";
  effects::AppendJsonText(to, reading.statement);
  to += reading.byKey ? R"(,"byKey":true,"read":[)" : R"(,"byKey":false,"read":[)";
  bool first = true;
  for (const std::string& column : reading.taken) {
    if (!first) to += ',';
    first = false;
    effects::AppendJsonText(to, column);
  }
  to += "]}";
}

std::string_view Named(Deed::Outcome outcome) {
  switch (outcome) {
    case Deed::Outcome::Done:
      return "done";
    case Deed::Outcome::Failed:
      return "failed";
    case Deed::Outcome::Unknown:
      return "unknown";
    case Deed::Outcome::Undone:
      return "rolled back";
  }
  return {};
}

}  // namespace

std::string ExplanationJson(const Explanation& explanation, const PreviewedJob& previewed,
                            std::string_view run) {
  Lines lines;
  const std::string at = automation::IsoText(previewed.at.WithoutFraction());
  lines.Begin("job").Text("job", ClassName(*previewed.job)).Text("key", explanation.Of().key).Text("at", at);
  lines.List("notLookedInto", explanation.Of().notLookedInto, &effects::AppendJsonText).End();
  for (const auto& [name, value] : explanation.Parameters()) {
    lines.Begin("parameter").Text("name", name).Text("value", value).End();
  }
  for (std::size_t i = 0; i < explanation.Of().rows.size(); ++i) {
    const SubjectRow& row = explanation.Of().rows[i];
    lines.Begin("row").Text("table", row.table).Row("key", row.key).Row("row", row.row);
    lines.List("returnedBy", explanation.ReadingsOf(i), &AppendReading);
    lines.List("notReturnedBy", explanation.StatementsWithout(i), &effects::AppendJsonText).End();
  }
  for (const FileStory& file : explanation.Files()) {
    lines.Begin("file").Text("path", file.path).Flag("listed", file.listed).Flag("timeRead", file.timeRead);
    lines.End();
  }
  for (const Deed& deed : explanation.Deeds()) {
    lines.Begin("effect").Text("outcome", Named(deed.outcome));
    if (!deed.error.empty()) lines.Text("error", deed.error);
    lines.Name("effect");
    effects::AppendLine(lines.Raw(), run, *deed.entry);
    lines.End();
  }
  for (const effects::LogText& log : explanation.Texts()) {
    lines.Begin("log").Text("text", log.text).Flag("known", log.known).End();
  }
  lines.Begin("end").Flag("finished", previewed.finished).Flag("moreRows", explanation.Of().hasMoreRows);
  lines.Flag("moreLogged", explanation.TextCount() > explanation.Texts().size()).End();
  return std::move(lines.Raw());
}

}  // namespace orvane::host
