// One run of a job with all that keeps it safe: the suite's lock, the question whether its services answer,
// the journal, a limit; or a preview of it.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "platform/automation/class_table.hpp"
#include "platform/automation/export.hpp"
#include "platform/automation/object.hpp"
#include "run/exit_codes.hpp"

namespace orvane {

// What a run's journal keeps of rows.
enum class JournalLevel { Keys, Rows, Off };

enum class MessageKind {
  Outcome,  // how the job ended: one for each that was begun
  Error,    // why something was not begun, or came to its end
  Warning,  // something failed, and the run went on
  Note,     // a failure that is part of every run: nothing is to be done
};

struct RunOptions {
  std::filesystem::path home = {};
  std::string job = {};  // a ProgID or a class name, in any case

  // The caller's own components; each goes before the suite's of the same ProgID, and what it is told to
  // change is recorded like everything else, but for rows that ADODB classes of the caller's own change. In a
  // preview those are left out that could change something.
  automation::ClassTable classes = {};
  // How the job is called; null: by its Run, which has come to its end when the run log says so. One of the
  // caller's own has when it returns; what it raises is told as the reason why the job ended.
  std::function<void(const automation::ObjectPtr& job)> call = nullptr;
  // The calling program's name, as the lock in the suite's database shows it to others.
  std::string caller = "a service host";

  std::optional<std::chrono::seconds> wait = std::nullopt;  // for the lock; nothing: without limit
  // Whether services are asked before the job begins, and the run is stopped when one goes away.
  bool preflight = true;
  std::optional<JournalLevel> journal = std::nullopt;  // nothing: as the job's journals usually are
  std::optional<std::string> limit = std::nullopt;     // on deletions: "500" of a table or folder, or "5%"
  bool strict = false;                                 // kErrorsLogged when something failed on the way

  // Asked while the lock is waited for, and at each safe point, of a preview too: whether the run is to stop.
  // One that raises is taken to say so.
  std::function<bool()> stop = nullptr;
  // A run that has to stop in its middle ends the process, for a job lets no error through and cannot be
  // left: because `stop` asks for it, the lock was lost, a service went away or the limit was reached, or
  // because a preview cannot go on; on a thread of its own where that has held a server's rows for too long.
  // The journal is complete then, and why it ends was told. This may
  // add something of the caller's own; when it returns or raises, or is null, the process ends by std::_Exit
  // with the code.
  std::function<void(int exitCode)> leave = nullptr;
  // Hears what there is to tell, without a line break at its end. What it raises is lost. Null: nobody
  // hears it.
  std::function<void(MessageKind kind, std::string_view text)> tell = nullptr;

  // Changes nothing and makes no journal; `line` hears each line that the run's journal would get.
  bool preview = false;
  std::function<void(std::string_view line)> line = nullptr;
};

// Runs the job, or previews it, on the calling thread, in a runtime of its own, and gives the exit code that
// "orvane-host run" would end with. Raises nothing. One at a time for each suite: another call waits for the
// lock, on any thread of any process. SIGPIPE is kept back meanwhile on the calling thread.
ORVANE_EXPORT int RunJob(const RunOptions& options);

}  // namespace orvane
