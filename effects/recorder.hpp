// The recorder of a run: hears of every effect before it takes place, and tells those who listen.
//
// It stands below the jobs: the wrappers of wrappers.hpp and the connections (as their ChangeObserver) report
// to it. Where there is no recorder none of them is installed.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "effects/counts.hpp"
#include "effects/effect.hpp"
#include "platform/adodb/changes.hpp"
#include "platform/automation/date_time.hpp"
#include "platform/automation/error.hpp"

namespace effects {

struct RunStart {
  std::string job = {};  // the class name, e.g. "Archive"
  bool preview = false;
  automation::DateTime at = {};  // the moment that the run takes for now
  std::int64_t process = 0;
  std::string host = {};
  std::string version = {};
};

struct Entry;
using EntryPtr = std::shared_ptr<const Entry>;

// An effect that did not take place, or of which nobody knows (Error::Outcome).
struct Failure {
  EntryPtr of;
  automation::Error error;
};

// An entry in the error log, or a failure line of the run log, without its time; or why the host stopped the
// run.
struct LogText {
  enum class Origin { ErrorLog, RunLog, Host };

  std::string text;
  bool known = false;  // part of every run: nothing is to be done
  Origin origin = Origin::ErrorLog;
};

struct RunEnd {
  int exit = 0;
  double seconds = 0;
  Counts counts;
};

// One line of a journal.
struct Entry {
  using What = std::variant<RunStart, Effect, Failure, LogText, RunEnd>;

  std::uint64_t seq = 0;  // from 1
  std::chrono::system_clock::time_point time;
  What what;
};

// Called on the thread of the job, in the middle of its work, in the order in which listeners were added.
class Listener {
 public:
  virtual ~Listener() = default;

  // An effect is told before it takes place, or before it becomes permanent. What this raises keeps it from
  // that; those who heard of it before are told of its failure. What is raised for another entry is ignored.
  virtual void OnEntry(const EntryPtr& entry) = 0;
};

// Not to be shared between threads.
class Recorder final : public ADODB::ChangeObserver {
 public:
  struct Options {
    // Whether whole rows are recorded as they were, and not their keys alone.
    bool rows = false;
    // Whether an entry in the error log is part of every run. May be null.
    bool (*isKnownEntry)(std::string_view text) = nullptr;
    // The message of a run-log line that tells of a failure; nothing for other lines. May be null.
    std::function<std::optional<std::string>(std::string_view line)> failureIn = nullptr;
    std::function<std::chrono::system_clock::time_point()> clock = &std::chrono::system_clock::now;
  };

  explicit Recorder(Options options);

  // The listener must outlive the recorder.
  void Add(Listener& listener) { listeners_.push_back(&listener); }

  // Tells the run's first and last lines. What a listener raises at the start passes through.
  void Start(RunStart start);
  void End(int exit);

  // Tells an effect that is about to take place, and gives what stands for it.
  EntryPtr Record(Effect effect);
  void RecordFailure(const EntryPtr& told, const automation::Error& error) noexcept;
  // What was told as one effect has changed so many items.
  void Recount(const EntryPtr& told, std::uint64_t items) {
    counts_.Recount(std::get<Effect>(told->what), items);
  }

  // Tells the effect and does it; when that fails tells so and passes the error on.
  template <class Act>
  decltype(auto) Do(Effect effect, Act&& act) {
    const EntryPtr told = Record(std::move(effect));
    try {
      return std::forward<Act>(act)();
    } catch (...) {
      RecordFailure(told, automation::PendingError());
      throw;
    }
  }

  // An entry that is made in the error log, and a line that is written to a run log.
  void ErrorLogged(std::string_view text) noexcept;
  void RunLogLine(std::string_view line) noexcept;
  // Why the run is stopped before its end.
  void Stopping(std::string_view why) noexcept;

  // What was told so far.
  const Counts& CountsSoFar() const { return counts_; }

  bool WantsRows() const override { return options_.rows; }
  Ticket RowChanges(ADODB::Change change, std::string_view table, ADODB::NamedRow key,
                    std::optional<ADODB::NamedRow> before) override;
  Ticket RowsChange(ADODB::Change change, std::string_view table, std::vector<ADODB::NamedRow> keys,
                    std::vector<ADODB::NamedRow> before) override;
  Ticket RowsCounted(ADODB::Change change, std::string_view table, std::size_t count) override;
  Ticket Begin() override;
  Ticket Commit() override;
  Ticket Rollback() override;
  void Failed(const Ticket& told, const automation::Error& error) noexcept override;

 private:
  EntryPtr Make(Entry::What what);
  void RecordQuietly(Entry::What what) noexcept;
  void Log(std::string_view text, bool known, LogText::Origin origin) noexcept;

  const Options options_;
  std::vector<Listener*> listeners_;
  std::uint64_t lastSeq_ = 0;
  std::chrono::steady_clock::time_point started_;
  Counts counts_;
};

}  // namespace effects
