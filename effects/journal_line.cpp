#include "effects/journal_line.hpp"

#include <cstddef>
#include <cstdio>
#include <variant>

#include "effects/json_text.hpp"
#include "platform/automation/iso_text.hpp"

namespace effects {
namespace {

struct UtcParts {
  std::chrono::year_month_day date;
  std::chrono::hh_mm_ss<std::chrono::milliseconds> time;
};

UtcParts Utc(std::chrono::system_clock::time_point moment) {
  const auto milliseconds = std::chrono::floor<std::chrono::milliseconds>(moment);
  const auto day = std::chrono::floor<std::chrono::days>(milliseconds);
  return {std::chrono::year_month_day(day), std::chrono::hh_mm_ss(milliseconds - day)};
}

class Line {
 public:
  Line(std::string& to, std::string_view run, const Entry& entry) : to_(to), entry_(entry) {
    to_ += R"({"v":)";
    AppendJsonNumber(to_, std::int64_t{kJournalVersion});
    Text("run", run);
    Number("seq", static_cast<std::int64_t>(entry.seq));
    to_ += R"(,"time":")";
    AppendTime(entry.time);
    to_ += '"';
  }

  void Write() {
    std::visit([this](const auto& what) { Members(what); }, entry_.what);
    to_ += '}';
  }

 private:
  void Members(const RunStart& start) {
    Text("op", "run.start");
    Text("job", start.job);
    Flag("preview", start.preview);
    Text("at", automation::IsoText(start.at.WithoutFraction()));
    Number("pid", start.process);
    Text("host", start.host);
    Text("version", start.version);
  }

  void Members(const Effect& effect) {
    Text("op", OpOf(effect));
    std::visit([this](const auto& change) { Members(change); }, effect);
  }

  void Members(const Failure& failure) {
    Text("op", "failed");
    Number("of", static_cast<std::int64_t>(failure.of->seq));
    Text("error", ErrorText(failure.error));
    Text("outcome", failure.error.Outcome() == automation::Outcome::Unknown ? "unknown" : "no");
  }

  void Members(const LogText& log) {
    Text("op", "log");
    Text("text", log.text);
    if (log.known) Flag("known", true);
  }

  void Members(const RunEnd& end) {
    Text("op", "run.end");
    Number("exit", end.exit);
    Name("seconds");
    AppendJsonNumber(to_, end.seconds);
    Name("counts");
    WriteCounts(end.counts);
  }

  void Members(const RowChange& row) {
    Text("table", row.table);
    Name("key");
    AppendJson(to_, row.key);
    if (!row.tellsBefore) return;
    Name("before");
    if (row.change == ADODB::Change::Insert) {
      to_ += "null";
    } else {
      AppendJson(to_, row.before);
    }
  }

  void Members(const RowsChange& rows) {
    Text("table", rows.table);
    Number("count", static_cast<std::int64_t>(rows.keys.size() + rows.withoutKeys));
    if (rows.withoutKeys > 0) return;
    Rows("keys", rows.keys);
    if (rows.tellsBefore) Rows("before", rows.before);
  }

  void Members(const TransactionStep&) {}
  void Members(const FileChange& file) { Text("path", file.path); }

  void Members(const MailSending& mail) {
    Text("to", mail.to);
    Text("subject", mail.subject);
  }

  void Members(const SharedChange& shared) {
    if (shared.name.empty()) {
      Text("path", shared.path);
    } else {
      Text("name", shared.name);
    }
    Text("folder", shared.folder);
  }

  void Members(const ComponentCall& call) {
    Text("component", call.component);
    Text("member", call.member);
    Name("arguments");
    AppendJson(to_, call.arguments);
  }

  // {"row.delete":{"PROSPECT":2},"mail.send":1,"failed":{"mail.send":1},"log":1}: a number where the kind has
  // no subjects. What failed, and what may have taken place all the same, stands behind, by kind.
  void WriteCounts(const Counts& counts) {
    to_ += '{';
    bool first = true;
    const auto& all = counts.All();
    for (auto at = all.begin(); at != all.end();) {
      const std::string& op = at->first.first;
      const auto end = all.upper_bound(std::pair(std::string_view(op), std::string_view("\xFF")));
      if (counts.Of(op).done > 0) {
        Item(first, op);
        WriteSubjects(at, end);
      }
      at = end;
    }
    Outcomes(first, "failed", counts, &Counts::Count::failed);
    Outcomes(first, "unknown", counts, &Counts::Count::unknown);
    for (const auto& [name, number] :
         {std::pair("log", counts.LogTexts()), std::pair("known", counts.KnownLogTexts())}) {
      if (number == 0) continue;
      Item(first, name);
      AppendJsonNumber(to_, static_cast<std::int64_t>(number));
    }
    to_ += '}';
  }

  template <class Iterator>
  void WriteSubjects(Iterator begin, Iterator end) {
    if (begin->first.second.empty() && std::next(begin) == end) {
      AppendJsonNumber(to_, static_cast<std::int64_t>(begin->second.done));
      return;
    }
    to_ += '{';
    bool first = true;
    for (; begin != end; ++begin) {
      if (begin->second.done == 0) continue;
      Item(first, begin->first.second);
      AppendJsonNumber(to_, static_cast<std::int64_t>(begin->second.done));
    }
    to_ += '}';
  }

  void Outcomes(bool& first, std::string_view name, const Counts& counts,
                std::uint64_t Counts::Count::*outcome) {
    std::map<std::string_view, std::uint64_t> byOp;
    for (const auto& [key, count] : counts.All()) {
      if (count.*outcome > 0) byOp[key.first] += count.*outcome;
    }
    if (byOp.empty()) return;
    Item(first, name);
    to_ += '{';
    bool firstOp = true;
    for (const auto& [op, number] : byOp) {
      Item(firstOp, op);
      AppendJsonNumber(to_, static_cast<std::int64_t>(number));
    }
    to_ += '}';
  }

  void Item(bool& first, std::string_view name) {
    if (!first) to_ += ',';
    first = false;
    AppendJsonText(to_, name);
    to_ += ':';
  }

  void Rows(std::string_view name, const std::vector<ADODB::NamedRow>& rows) {
    Name(name);
    to_ += '[';
    for (std::size_t i = 0; i < rows.size(); ++i) {
      if (i > 0) to_ += ',';
      AppendJson(to_, rows[i]);
    }
    to_ += ']';
  }

  void Name(std::string_view name) {
    to_ += ",\"";
    to_ += name;
    to_ += "\":";
  }
  void Text(std::string_view name, std::string_view text) {
    Name(name);
    AppendJsonText(to_, text);
  }
  void Number(std::string_view name, std::int64_t number) {
    Name(name);
    AppendJsonNumber(to_, number);
  }
  void Flag(std::string_view name, bool flag) {
    Name(name);
    to_ += flag ? "true" : "false";
  }

  void AppendTime(std::chrono::system_clock::time_point moment) {
    const UtcParts utc = Utc(moment);
    AppendPadded(static_cast<int>(utc.date.year()), 4, '-');
    AppendPadded(static_cast<unsigned int>(utc.date.month()), 2, '-');
    AppendPadded(static_cast<unsigned int>(utc.date.day()), 2, 'T');
    AppendPadded(utc.time.hours().count(), 2, ':');
    AppendPadded(utc.time.minutes().count(), 2, ':');
    AppendPadded(utc.time.seconds().count(), 2, '.');
    AppendPadded(utc.time.subseconds().count(), 3, 'Z');
  }

  // The last `width` digits, and what stands behind them.
  void AppendPadded(std::int64_t number, std::size_t width, char behind) {
    const std::size_t end = to_.size() + width;
    to_.append(width, '0');
    for (std::size_t at = end; at > end - width; number /= 10)
      to_[--at] = static_cast<char>('0' + number % 10);
    to_ += behind;
  }

  std::string& to_;
  const Entry& entry_;
};

}  // namespace

void AppendLine(std::string& to, std::string_view run, const Entry& entry) {
  Line(to, run, entry).Write();
}

std::string RunName(std::chrono::system_clock::time_point begin, std::int64_t process, std::string_view job) {
  const UtcParts utc = Utc(begin);
  char text[64];
  std::snprintf(text, sizeof text, "%04d%02u%02uT%02d%02d%02dZ-%lld-", static_cast<int>(utc.date.year()),
                static_cast<unsigned int>(utc.date.month()), static_cast<unsigned int>(utc.date.day()),
                static_cast<int>(utc.time.hours().count()), static_cast<int>(utc.time.minutes().count()),
                static_cast<int>(utc.time.seconds().count()), static_cast<long long>(process));
  return text + std::string(job);
}

std::string ErrorText(const automation::Error& error) {
  return error.Description() + " (" + std::to_string(error.Number()) + ")";
}

}  // namespace effects
