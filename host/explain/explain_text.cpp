#include <algorithm>
#include <array>
#include <set>
#include <utility>

#include "effects/json_text.hpp"
#include "host/explain/explain_report.hpp"
#include "platform/automation/iso_text.hpp"
#include "platform/base/text.hpp"

namespace orvane::host {
namespace {

using ADODB::NamedRow;
using ADODB::NamedValue;
using Outcome = Deed::Outcome;
using ColumnNames = std::set<std::string, base::LessIgnoringAsciiCase>;

std::string Shown(const NamedValue& value) {
  constexpr std::size_t kMost = 100;
  if (value.value.IsNull()) return "(null)";
  std::string text;
  if (value.value.IsText() && base::IsUtf8(std::get<std::string>(value.value.Get()))) {
    text = base::WithControlsShown(std::get<std::string>(value.value.Get()));
  } else {
    effects::AppendJson(text, value);
    if (value.value.IsDate()) text = text.substr(1, text.size() - 2);
  }
  if (text.size() <= kMost) return text;
  std::size_t end = kMost;
  while (base::IsUtf8Continuation(text[end])) --end;
  return text.substr(0, end) + "...";
}

// "Q_ID 17, R_STATUS 150"
std::string Named(const NamedRow& key) {
  std::string text;
  for (const NamedValue& value : key) {
    text += (text.empty() ? "" : ", ") + value.column + ' ' + Shown(value);
  }
  return text;
}

std::string_view Past(ADODB::Change change) {
  switch (change) {
    case ADODB::Change::Insert:
      return "inserted";
    case ADODB::Change::Update:
      return "changed";
    case ADODB::Change::Delete:
      return "deleted";
  }
  return {};
}

ADODB::Change ChangeOf(const effects::Effect& effect) {
  if (const auto* row = std::get_if<effects::RowChange>(&effect)) return row->change;
  return std::get<effects::RowsChange>(effect).change;
}

const effects::Effect& EffectOf(const Deed& deed) {
  return std::get<effects::Effect>(deed.entry->what);
}

std::string Addition(const Deed& deed) {
  switch (deed.outcome) {
    case Outcome::Done:
      return {};
    case Outcome::Failed:
      return ", which fails: " + base::WithControlsShown(deed.error);
    case Outcome::Unknown:
      return ", which may fail: " + base::WithControlsShown(deed.error);
    case Outcome::Undone:
      return ", which is rolled back";
  }
  return {};
}

class EffectText {
 public:
  std::string operator()(const effects::RowChange& row) const {
    constexpr std::array<std::string_view, 3> kDoing = {"insert a row into ", "change the row of ",
                                                        "delete the row of "};
    const std::string key = Named(row.key);
    return std::string(kDoing[static_cast<std::size_t>(row.change)]) + row.table +
           (key.empty() ? "" : ", " + key);
  }
  std::string operator()(const effects::RowsChange& rows) const {
    return std::string(rows.change == ADODB::Change::Delete ? "delete" : "change") + " rows of " + rows.table;
  }
  std::string operator()(const effects::TransactionStep&) const { return {}; }
  std::string operator()(const effects::FileChange& file) const {
    constexpr std::array<std::string_view, 5> kDoing = {"write the file ", "delete the file ",
                                                        "make the folder ", "delete the folder ", "save "};
    return std::string(kDoing[static_cast<std::size_t>(file.kind)]) + base::WithControlsShown(file.path);
  }
  std::string operator()(const effects::MailSending& mail) const {
    return "send a mail to \"" + base::WithControlsShown(mail.to) + "\", subject \"" +
           base::WithControlsShown(mail.subject) + '"';
  }
  std::string operator()(const effects::SharedChange& shared) const {
    constexpr std::array<std::string_view, 4> kDoing = {"store", "fetch", "delete", "mark"};
    return std::string(kDoing[static_cast<std::size_t>(shared.kind)]) + " in the shared place " +
           base::WithControlsShown(shared.name.empty() ? shared.path : shared.name);
  }
  std::string operator()(const effects::ComponentCall& call) const {
    return std::string(call.kind == effects::ComponentCall::Kind::Erp ? "call " : "tell ") + call.component +
           '.' + call.member;
  }
};

class Report {
 public:
  Report(const Explanation& explanation, const PreviewedJob& previewed)
      : explanation_(explanation), previewed_(previewed) {}

  std::string Text() {
    Head();
    for (std::size_t row = 0; row < explanation_.Of().rows.size(); ++row) Row(row);
    if (explanation_.Of().hasMoreRows) {
      Line("More rows than these " + std::to_string(Subject::kMostRows) +
           " belong to it; they are left out.");
    }
    for (const FileStory& file : explanation_.Files()) File(file);
    OtherDeeds();
    Logged();
    return std::move(text_);
  }

 private:
  void Line(const std::string& line) { text_ += line + '\n'; }

  void Head() {
    Line(std::string(previewed_.job->progId) + " at " + automation::IsoText(previewed_.at.WithoutFraction()) +
         ": " + base::WithControlsShown(explanation_.Of().key));
    for (const std::string& table : explanation_.Of().notLookedInto) {
      Line("  not looked into: " + base::WithControlsShown(table));
    }
    if (!previewed_.finished) {
      Line("  the job would end without its stop line: " + base::WithControlsShown(previewed_.endedBy));
    }
    if (explanation_.Parameters().empty()) return;
    Line("\nSettings that it reads");
    for (const auto& [name, value] : explanation_.Parameters()) {
      Line("  " + base::WithControlsShown(name) + " = " + base::WithControlsShown(value));
    }
  }

  void Row(std::size_t number) {
    const SubjectRow& row = explanation_.Of().rows[number];
    const std::vector<Reading> readings = explanation_.ReadingsOf(number);
    ColumnNames taken;
    for (const Reading& reading : readings) taken.insert(reading.taken.begin(), reading.taken.end());
    Line('\n' + row.table + ", " + Named(row.key));
    std::size_t width = 0;
    for (const NamedValue& value : row.row) width = std::max(width, value.column.size());
    for (const NamedValue& value : row.row) {
      Line(std::string(taken.contains(value.column) ? "  * " : "    ") + value.column +
           std::string(width - value.column.size() + 2, ' ') + Shown(value));
    }
    if (!taken.empty()) Line("    (*: read by the job)");
    for (const Reading& reading : readings) {
      Line((reading.byKey ? "  returned by: " : "  returned in part by: ") +
           base::WithControlsShown(reading.statement));
    }
    for (const std::string& statement : explanation_.StatementsWithout(number)) {
      Line("  not returned by: " + base::WithControlsShown(statement));
    }
    DeedsOf(number, !readings.empty());
  }

  void DeedsOf(std::size_t row, bool wasRead) {
    bool none = true;
    for (const Deed& deed : explanation_.Deeds()) {
      if (std::find(deed.rows.begin(), deed.rows.end(), row) == deed.rows.end()) continue;
      none = false;
      Line("  -> would be " + std::string(Past(ChangeOf(EffectOf(deed)))) + Addition(deed));
    }
    if (none) Line(wasRead ? "  -> stays as it is" : "  -> stays as it is: the job does not read it");
  }

  void File(const FileStory& file) {
    Line('\n' + base::WithControlsShown(file.path));
    Line(file.timeRead ? "  found in its folder, its time of last access read"
         : file.listed ? "  found in its folder"
                       : "  in no folder that the job lists by this name");
    const bool isChanged =
        std::any_of(explanation_.Deeds().begin(), explanation_.Deeds().end(), [&file](const Deed& deed) {
          const auto* change = std::get_if<effects::FileChange>(&EffectOf(deed));
          return change != nullptr && base::EqualsIgnoringAsciiCase(change->path, file.path);
        });
    if (!isChanged) Line("  -> stays as it is");
  }

  void OtherDeeds() {
    bool first = true;
    for (const Deed& deed : explanation_.Deeds()) {
      if (!deed.rows.empty()) continue;
      if (std::exchange(first, false)) Line("\nWith it the job would");
      Line("  " + std::visit(EffectText(), EffectOf(deed)) + Addition(deed));
    }
  }

  void Logged() {
    if (explanation_.Texts().empty()) return;
    Line("\nWhat the whole run would log as failed");
    for (const effects::LogText& log : explanation_.Texts()) {
      Line("  " + base::WithControlsShown(log.text) + (log.known ? " (in every run)" : ""));
    }
    const std::size_t more = explanation_.TextCount() - explanation_.Texts().size();
    if (more > 0) Line("  and " + std::to_string(more) + " more");
  }

  const Explanation& explanation_;
  const PreviewedJob& previewed_;
  std::string text_;
};

}  // namespace

std::string ExplanationText(const Explanation& explanation, const PreviewedJob& previewed) {
  return Report(explanation, previewed).Text();
}

}  // namespace orvane::host
