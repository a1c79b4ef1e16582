#include "host/arguments.hpp"

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string>
#include <system_error>

namespace orvane_host {
namespace {

constexpr std::string_view kHelp = R"(Runs the back-office jobs of an Orvane suite.

  orvane-host init HOME [--demo]             make a suite at HOME with embedded databases; --demo fills it
      [--database STRING --catalog STRING]   with these databases instead, which must be empty
  orvane-host run [--home HOME] JOB...       run jobs, one after the other
      [--strict]                             exit 1 when something failed on the way
      [--wait SECONDS | --no-wait]           how long to wait for another run to end; without limit by default
  orvane-host status [--home HOME]           the last runs of each job, from the run logs
  orvane-host list                           the jobs
  orvane-host --help | --version

JOB is a ProgID (OrvaneProcess.Archive) or a class name (Archive), in any case. HOME is the installation
directory; without --home it is $ORVANE_HOME. Run logs and the error log, Vantrel.log, lie in the folder OrvLog
beside HOME.

One call of run at a time works on a suite; the others wait, and say for whom. Where the suite's database is a
server, that holds for all machines that use it.

Exit codes of run, the first that applies: 78 configuration, or the lock cannot be made; 69 the database does not
answer, and nothing was begun; 70 a job ended without its stop line; 75 another run holds the suite, or the run
stopped at a safe point because its lock was lost; 1 with --strict, when something failed on the way (an entry in the error log, a failure line in
a run log, a mail that was not taken, no start line); 0 every job wrote its stop line. 64 usage or unknown job.
)";

class Words {
 public:
  explicit Words(const std::vector<std::string>& words) : words_(words) {}

  bool AtEnd() const { return next_ == words_.size(); }
  const std::string& Next() { return words_[next_++]; }

  // The value of an option: "--name=value", or the word after "--name".
  bool TakeOption(std::string_view name, std::string& value) {
    const std::string& word = words_[next_];
    if (word == name) {
      if (next_ + 1 == words_.size()) throw UsageError(std::string(name) + " needs a value");
      value = words_[next_ + 1];
      next_ += 2;
      return true;
    }
    const std::string withValue = std::string(name) + "=";
    if (word.compare(0, withValue.size(), withValue) != 0) return false;
    value = word.substr(withValue.size());
    ++next_;
    return true;
  }

  bool TakeFlag(std::string_view name) {
    if (words_[next_] != name) return false;
    ++next_;
    return true;
  }

  // The next word, which must not look like an option.
  std::string TakeOperand(std::string_view command) {
    const std::string& word = Next();
    if (word.size() > 1 && word[0] == '-') {
      throw UsageError("unknown option " + word + " of " + std::string(command));
    }
    return word;
  }

 private:
  const std::vector<std::string>& words_;
  std::size_t next_ = 0;
};

std::chrono::seconds Seconds(const std::string& text) {
  std::uint32_t seconds = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, seconds);
  if (error != std::errc{} || stop != end) {
    throw UsageError("--wait takes a number of seconds, not \"" + text + "\"");
  }
  return std::chrono::seconds(seconds);
}

void TakeHome(Arguments& arguments, const std::optional<std::string>& home, const char* environmentHome) {
  if (home) {
    arguments.home = *home;
  } else if (environmentHome != nullptr) {
    arguments.home = environmentHome;
  }
  if (arguments.home.empty())
    throw UsageError("no installation directory: give --home HOME or set ORVANE_HOME");
}

void ParseInit(Words& words, Arguments& arguments) {
  std::string value;
  while (!words.AtEnd()) {
    if (words.TakeFlag("--demo")) {
      arguments.demo = true;
    } else if (words.TakeOption("--database", value)) {
      arguments.database = value;
    } else if (words.TakeOption("--catalog", value)) {
      arguments.catalogue = value;
    } else if (arguments.home.empty()) {
      arguments.home = words.TakeOperand("init");
    } else {
      throw UsageError("init takes one directory, not also " + words.TakeOperand("init"));
    }
  }
  if (arguments.home.empty()) throw UsageError("init needs the directory to make the suite in");
  if (arguments.database.has_value() != arguments.catalogue.has_value()) {
    throw UsageError("--database and --catalog go together");
  }
}

void ParseRun(Words& words, Arguments& arguments, const char* environmentHome) {
  std::optional<std::string> home;
  std::string value;
  bool noWait = false;
  while (!words.AtEnd()) {
    if (words.TakeOption("--home", value)) {
      home = value;
    } else if (words.TakeFlag("--strict")) {
      arguments.strict = true;
    } else if (words.TakeOption("--wait", value)) {
      arguments.wait = Seconds(value);
    } else if (words.TakeFlag("--no-wait")) {
      noWait = true;
    } else {
      arguments.jobs.push_back(words.TakeOperand("run"));
    }
  }
  if (arguments.jobs.empty()) throw UsageError("run needs the name of at least one job");
  if (noWait && arguments.wait) throw UsageError("--wait and --no-wait exclude each other");
  if (noWait) arguments.wait = std::chrono::seconds(0);
  TakeHome(arguments, home, environmentHome);
}

void ParseStatus(Words& words, Arguments& arguments, const char* environmentHome) {
  std::optional<std::string> home;
  std::string value;
  while (!words.AtEnd()) {
    if (words.TakeOption("--home", value)) {
      home = value;
    } else {
      throw UsageError("status takes no " + words.TakeOperand("status"));
    }
  }
  TakeHome(arguments, home, environmentHome);
}

}  // namespace

Arguments ParseArguments(const std::vector<std::string>& given, const char* environmentHome) {
  for (const std::string& word : given) {
    if (word == "--help" || word == "-h") return Arguments();
  }
  if (given.empty()) throw UsageError("no command");

  Words words(given);
  const std::string& command = words.Next();
  Arguments arguments;
  if (command == "init") {
    arguments.command = Command::Init;
    ParseInit(words, arguments);
  } else if (command == "run") {
    arguments.command = Command::Run;
    ParseRun(words, arguments, environmentHome);
  } else if (command == "status") {
    arguments.command = Command::Status;
    ParseStatus(words, arguments, environmentHome);
  } else if (command == "list" || command == "--version" || command == "help") {
    arguments.command = command == "list"   ? Command::List
                        : command == "help" ? Command::Help
                                            : Command::Version;
    if (!words.AtEnd()) throw UsageError(command + " takes no arguments");
  } else {
    throw UsageError("unknown command " + command);
  }
  return arguments;
}

std::string_view HelpText() {
  return kHelp;
}

}  // namespace orvane_host
