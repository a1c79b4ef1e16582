#include "host/command_table.hpp"

#include <charconv>
#include <cstdint>
#include <initializer_list>
#include <system_error>
#include <utility>

namespace orvane::host {
namespace {

std::uint32_t Number(const std::string& text, const std::string& option, const std::string& unit) {
  std::uint32_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc{} || stop != end) {
    throw UsageError("--" + option + " takes a number of " + unit + ", not \"" + text + "\"");
  }
  return number;
}

void TakeJob(const std::string& word, Arguments& into) {
  into.jobs.push_back(word);
}

constexpr Option kJson = {"json", "", "print one JSON object a line and nothing else",
                          [](const std::string&, Arguments& into) { into.json = true; }};

constexpr Option kInitOptions[] = {
    {"demo", "", "fill it with data that show what each job does",
     [](const std::string&, Arguments& into) { into.demo = true; }},
    {"database", "STRING", "the suite's database, which must be empty, instead of an embedded one",
     [](const std::string& value, Arguments& into) { into.database = value; }},
    {"catalog", "STRING", "the catalogue's database, with --database",
     [](const std::string& value, Arguments& into) { into.catalogue = value; }},
    {"connections-from", "FILE",
     "both connection strings, a line each, from a file, or from standard input (-): the process list shows "
     "a "
     "password that stands on the command line",
     [](const std::string& value, Arguments& into) { into.connectionsFrom = value; }},
    {"owner", "USER", "the account that runs the jobs: the suite and its log folder are made for it",
     [](const std::string& value, Arguments& into) { into.owner = value; }},
};

void TakeNewHome(const std::string& word, Arguments& into) {
  if (!into.home.empty()) throw UsageError("init takes one directory, not also " + word);
  into.home = word;
}

void CheckInit(const Arguments& arguments) {
  if (arguments.home.empty()) throw UsageError("init needs the directory to make the suite in");
  if (arguments.database.has_value() != arguments.catalogue.has_value()) {
    throw UsageError("--database and --catalog go together");
  }
  if (arguments.database && arguments.connectionsFrom) {
    throw UsageError("--database and --connections-from exclude each other");
  }
}

constexpr Option kCheckOptions[] = {kJson};

void TakeWait(std::chrono::seconds longest, Arguments& into) {
  if (into.wait) throw UsageError("--wait and --no-wait exclude each other");
  into.wait = longest;
}

template <class Value>
Value OneOf(const std::string& given, const std::string& option,
            std::initializer_list<std::pair<std::string_view, Value>> values) {
  std::string expected;
  for (const auto& [name, value] : values) {
    if (given == name) return value;
    expected += (expected.empty() ? "" : ", ") + std::string(name);
  }
  throw UsageError("--" + option + " takes one of " + expected + ", not \"" + given + "\"");
}

constexpr Option kRunOptions[] = {
    {"strict", "", "exit 1 when something failed on the way",
     [](const std::string&, Arguments& into) { into.strict = true; }},
    {"wait", "SECONDS", "how long to wait for another run to end; without it, as long as it takes",
     [](const std::string& value, Arguments& into) {
       const std::chrono::seconds longest(Number(value, "wait", "seconds"));
       TakeWait(longest, into);
     }},
    {"no-wait", "", "do not wait",
     [](const std::string&, Arguments& into) { TakeWait(std::chrono::seconds(0), into); }},
    {"limit", "N|P%",
     "begin no job that would delete more than N rows or items, or P percent, of a table or folder",
     [](const std::string& value, Arguments& into) {
       into.limit = effects::Limit::Parse(value);
       if (!into.limit) {
         throw UsageError("--limit takes a number, or a share from 0% to 100%, not \"" + value + "\"");
       }
     }},
    {"metrics", "FILE", "write what came of the run for a monitoring system, in the format of Prometheus",
     [](const std::string& value, Arguments& into) { into.metrics = value; }},
    {"no-preflight", "", "begin without asking whether the directory and the mail server answer",
     [](const std::string&, Arguments& into) { into.preflight = false; }},
    {"journal", "LEVEL",
     "what the journal keeps of rows: keys, rows, or off; Archive's rows, the others' keys",
     [](const std::string& value, Arguments& into) {
       using enum JournalLevel;
       into.journal = OneOf<JournalLevel>(value, "journal", {{"keys", Keys}, {"rows", Rows}, {"off", Off}});
     }},
    {"progress", "WHEN", "tell how far a job is: auto, always or never",
     [](const std::string& value, Arguments& into) {
       using enum ShowProgress;
       into.progress =
           OneOf<ShowProgress>(value, "progress", {{"auto", Auto}, {"always", Always}, {"never", Never}});
     }},
};

// "YYYY-MM-DD HH:MM:SS", a day of the calendar.
automation::DateTime Moment(const std::string& text) {
  constexpr std::string_view kForm = "dddd-dd-dd dd:dd:dd";
  bool fits = text.size() == kForm.size();
  for (std::size_t i = 0; fits && i < text.size(); ++i) {
    fits = kForm[i] == 'd' ? text[i] >= '0' && text[i] <= '9' : text[i] == kForm[i];
  }
  try {
    if (fits) {
      const auto number = [&text](std::size_t from, std::size_t count) {
        return std::stoi(text.substr(from, count));
      };
      const automation::DateTimeParts parts{.year = number(0, 4),
                                            .month = number(5, 2),
                                            .day = number(8, 2),
                                            .hour = number(11, 2),
                                            .minute = number(14, 2),
                                            .second = number(17, 2)};
      const automation::DateTime moment = automation::DateTime::FromParts(parts);
      const automation::DateTimeParts read = moment.Parts();
      if (read.month == parts.month && read.day == parts.day && read.hour == parts.hour &&
          read.minute == parts.minute && read.second == parts.second) {
        return moment;
      }
    }
  } catch (const automation::Error&) {
    // No day of the calendar.
  }
  throw UsageError("--at takes a moment such as \"2026-11-22 02:00:00\", not \"" + text + "\"");
}

constexpr Option kPreviewOptions[] = {
    {"at", "\"YYYY-MM-DD HH:MM:SS\"", "at that moment, local time, instead of now",
     [](const std::string& value, Arguments& into) { into.at = Moment(value); }},
    kJson,
};

void CheckPreview(const Arguments& arguments) {
  if (arguments.jobs.empty()) {
    throw UsageError("preview needs the name of at least one job; \"orvane-host list\" shows them");
  }
}

void TakeJobAndKey(const std::string& word, Arguments& into) {
  if (into.jobs.empty()) return TakeJob(word, into);
  if (!into.key.empty()) throw UsageError("explain takes one job and one key, not also " + word);
  into.key = word;
}

void CheckExplain(const Arguments& arguments) {
  if (arguments.key.empty()) {
    throw UsageError(
        "explain needs a job and a key: a customer's address, user id or number, a request's "
        "number, a file's name");
  }
}

void CheckRun(const Arguments& arguments) {
  if (arguments.jobs.empty()) {
    throw UsageError("run needs the name of at least one job; \"orvane-host list\" shows them");
  }
}

constexpr Option kStatusOptions[] = {
    kJson,
    {"max-age", "HOURS", "exit 1 when a job has no finished run that is so young",
     [](const std::string& value, Arguments& into) {
       into.maxAge = std::chrono::hours(Number(value, "max-age", "hours"));
     }},
};

constexpr Option kReportOptions[] = {
    kJson,
    {"html", "FILE", "write a page for a browser",
     [](const std::string& value, Arguments& into) { into.html = value; }},
};

void CheckReport(const Arguments& arguments) {
  if (arguments.json && arguments.html) throw UsageError("--json and --html exclude each other");
}

constexpr Option kRestoreOptions[] = {
    {"apply", "", "put them back; without it nothing is changed",
     [](const std::string&, Arguments& into) { into.apply = true; }},
};

void TakeRunAndRequests(const std::string& word, Arguments& into) {
  if (into.run.empty()) {
    into.run = word;
  } else {
    into.requests.push_back(word);
  }
}

void CheckRestore(const Arguments& arguments) {
  if (arguments.run.empty()) {
    throw UsageError("restore needs the name of a run of Archive; \"orvane-host report\" shows the runs");
  }
}

constexpr CommandEntry kCommands[] = {
    {"init", "HOME", "make a suite in a new or empty directory, with embedded databases", false, false,
     kInitOptions, &TakeNewHome, &CheckInit, &InitSuite},
    {"run", "JOB...", "run jobs, one after the other", true, false, kRunOptions, &TakeJob, &CheckRun,
     &RunJobs},
    {"preview", "JOB...", "what a run of these jobs would do, without changing anything", true, true,
     kPreviewOptions, &TakeJob, &CheckPreview, &PreviewJobs},
    {"explain", "JOB KEY",
     "what a run of the job would read of a customer, a request or a file, and do with it; changes nothing",
     true, true, kPreviewOptions, &TakeJobAndKey, &CheckExplain, &ExplainJob},
    {"check", "[JOB...]", "whether everything that the jobs need is there, without changing anything", true,
     true, kCheckOptions, &TakeJob, nullptr, &CheckSuite},
    {"status", "[JOB...]", "the last runs of each job, from the run logs", true, true, kStatusOptions,
     &TakeJob, nullptr, &ShowStatus},
    {"report", "[RUN...]", "what the journals say of all runs, or of these in detail; failures first", true,
     true, kReportOptions, [](const std::string& word, Arguments& into) { into.runs.push_back(word); },
     &CheckReport, &ReportRuns},
    {"restore", "RUN [REQUEST...]",
     "archived requests and their transactions back into the database, from the journal of the run", true,
     false, kRestoreOptions, &TakeRunAndRequests, &CheckRestore, &RestoreRequests},
    {"list", "", "the jobs", false, true, {}, nullptr, nullptr, &ListJobs},
    {"help",
     "[COMMAND]",
     "this text, or a command's part of it; \"orvane-host COMMAND --help\" is the same",
     false,
     true,
     {},
     [](const std::string& word, Arguments& into) {
       into.about = FindCommand(word);
       if (into.about == nullptr) throw UsageError("no command \"" + word + "\" to help with");
     },
     nullptr,
     &ShowHelp},
    {"--version", "", "the version", false, true, {}, nullptr, nullptr, &ShowVersion},
};

}  // namespace

std::span<const CommandEntry> Commands() {
  return kCommands;
}

const Option& HomeOption() {
  static constexpr Option kHome = {"home", "HOME", "the installation directory; without it, $ORVANE_HOME",
                                   [](const std::string& value, Arguments& into) { into.home = value; }};
  return kHome;
}

const CommandEntry* FindCommand(std::string_view name) {
  for (const CommandEntry& command : kCommands) {
    if (command.name == name) return &command;
  }
  return nullptr;
}

}  // namespace orvane::host
