// The command line of orvane-host.
#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "effects/limit.hpp"
#include "platform/automation/date_time.hpp"
#include "run/run_job.hpp"

namespace orvane::host {

struct CommandEntry;

enum class ShowProgress { Auto, Always, Never };

struct Arguments {
  const CommandEntry* command = nullptr;  // of the table of commands; never null once parsed
  const CommandEntry* about = nullptr;    // help: of this command alone; null: of all
  std::filesystem::path home;
  std::vector<std::string> jobs;  // as given, in order
  bool json = false;              // check, explain, preview, report, status

  bool strict = false;    // run
  bool preflight = true;  // run; also whether it stops when a service goes away
  // run: what the journal keeps of rows; nothing: as the job's journals usually are
  std::optional<JournalLevel> journal;
  ShowProgress progress = ShowProgress::Auto;    // run
  std::optional<std::filesystem::path> metrics;  // run: the file of a monitoring system
  // run: how long to wait for another run to end; nothing: without limit
  std::optional<std::chrono::seconds> wait;

  std::optional<std::chrono::hours> maxAge;  // status

  std::vector<std::string> runs;           // report: names of runs
  std::optional<std::string> html;         // report: where the page goes
  std::optional<effects::Limit> limit;     // run
  std::optional<automation::DateTime> at;  // preview, explain; nothing: now
  std::string key;                         // explain: whom or what about

  std::string run;                    // restore: its name
  std::vector<std::string> requests;  // restore: their numbers; none: all of the run
  bool apply = false;                 // restore: put them back, and not only say which

  bool demo = false;                           // init
  std::optional<std::string> database;         // init: connection string of the suite's database
  std::optional<std::string> catalogue;        // init: connection string of the catalogue database
  std::optional<std::string> connectionsFrom;  // init: the file that holds both; "-": standard input
  std::optional<std::string> owner;            // init: the account that is to own the suite
};

class UsageError : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Reads the words after the program's name by the table of commands. `environmentHome` stands in for a
// missing --home. Raises UsageError with what is wrong, and what to do about it where that is not plain.
// An option is taken by its full name only: a script must not change its meaning because an option was added.
// Threads: one at a time in a process.
Arguments ParseArguments(const std::vector<std::string>& given, const char* environmentHome);

}  // namespace orvane::host
