#include "effects/recorder.hpp"

#include <cstddef>

namespace effects {

Recorder::Recorder(Options options) : options_(std::move(options)) {}

EntryPtr Recorder::Make(Entry::What what) {
  return std::make_shared<const Entry>(Entry{++lastSeq_, options_.clock(), std::move(what)});
}

void Recorder::Start(RunStart start) {
  started_ = std::chrono::steady_clock::now();
  const EntryPtr entry = Make(std::move(start));
  for (Listener* listener : listeners_) listener->OnEntry(entry);
}

void Recorder::End(int exit) {
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - started_;
  // To the millisecond, as the times of the lines.
  const double seconds = static_cast<double>(static_cast<std::int64_t>(taken.count() * 1000)) / 1000;
  RecordQuietly(RunEnd{exit, seconds, counts_});
}

EntryPtr Recorder::Record(Effect effect) {
  EntryPtr entry = Make(std::move(effect));
  const auto& told = std::get<Effect>(entry->what);
  std::size_t heard = 0;
  try {
    for (Listener* listener : listeners_) {
      listener->OnEntry(entry);
      ++heard;
    }
  } catch (...) {
    if (heard > 0) {
      const std::vector<Listener*> all = listeners_;
      listeners_.resize(heard);
      RecordQuietly(Failure{entry, automation::PendingError()});
      listeners_ = all;
    }
    throw;
  }
  counts_.Add(told);
  return entry;
}

void Recorder::RecordFailure(const EntryPtr& told, const automation::Error& error) noexcept try {
  counts_.AddFailure(std::get<Effect>(told->what), error.Outcome());
  RecordQuietly(Failure{told, error});
} catch (...) {
  // No memory to tell it.
}

void Recorder::RecordQuietly(Entry::What what) noexcept try {
  const EntryPtr entry = Make(std::move(what));
  for (Listener* listener : listeners_) {
    try {
      listener->OnEntry(entry);
    } catch (...) {
      // What has happened cannot be kept from happening.
    }
  }
} catch (...) {
  // No memory to tell it.
}

void Recorder::Log(std::string_view text, bool known, LogText::Origin origin) noexcept try {
  counts_.AddLogText(known);
  RecordQuietly(LogText{std::string(text), known, origin});
} catch (...) {
  // No memory to tell it.
}

void Recorder::ErrorLogged(std::string_view text) noexcept {
  Log(text, options_.isKnownEntry != nullptr && options_.isKnownEntry(text), LogText::Origin::ErrorLog);
}

void Recorder::RunLogLine(std::string_view line) noexcept try {
  if (!options_.failureIn) return;
  if (const std::optional<std::string> failure = options_.failureIn(line)) {
    Log(*failure, false, LogText::Origin::RunLog);
  }
} catch (...) {
  // No memory to tell it.
}

void Recorder::Stopping(std::string_view why) noexcept {
  Log(why, false, LogText::Origin::Host);
}

Recorder::Ticket Recorder::RowChanges(ADODB::Change change, std::string_view table, ADODB::NamedRow key,
                                      std::optional<ADODB::NamedRow> before) {
  return Record(RowChange{change, std::string(table), std::move(key), options_.rows,
                          before ? std::move(*before) : ADODB::NamedRow()});
}

Recorder::Ticket Recorder::RowsChange(ADODB::Change change, std::string_view table,
                                      std::vector<ADODB::NamedRow> keys,
                                      std::vector<ADODB::NamedRow> before) {
  return Record(
      effects::RowsChange{change, std::string(table), std::move(keys), options_.rows, std::move(before)});
}

Recorder::Ticket Recorder::RowsCounted(ADODB::Change change, std::string_view table, std::size_t count) {
  effects::RowsChange rows{change, std::string(table), {}, false, {}};
  rows.withoutKeys = count;
  return Record(std::move(rows));
}

Recorder::Ticket Recorder::Begin() {
  return Record(TransactionStep{TransactionStep::Kind::Begin});
}

Recorder::Ticket Recorder::Commit() {
  return Record(TransactionStep{TransactionStep::Kind::Commit});
}

Recorder::Ticket Recorder::Rollback() {
  return Record(TransactionStep{TransactionStep::Kind::Rollback});
}

void Recorder::Failed(const Ticket& told, const automation::Error& error) noexcept {
  if (told) RecordFailure(std::static_pointer_cast<const Entry>(told), error);
}

}  // namespace effects
