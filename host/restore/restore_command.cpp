// "restore": archived requests back into the database, from the journal of the run that deleted them.
#include <algorithm>
#include <charconv>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <system_error>
#include <vector>

#include "effects/journal_files.hpp"
#include "effects/journal_reader.hpp"
#include "host/commands.hpp"
#include "host/restore/archived_rows.hpp"
#include "host/restore/row_insertion.hpp"
#include "host/stop_signals.hpp"
#include "platform/adodb/session/connection_string.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/base/text.hpp"
#include "platform/locale/icu_locale.hpp"
#include "run/exit_codes.hpp"
#include "run/turn.hpp"
#include "suite/composition/composition.hpp"
#include "suite/composition/suite_home.hpp"

namespace orvane::host {
namespace {

constexpr std::size_t kMostShown = 20;

std::filesystem::path JournalOf(const SuiteHome& home, const std::string& run) {
  for (const effects::JournalFile& file : effects::JournalsIn(home.Journals())) {
    if (file.run == run) return file.path;
  }
  throw UsageError("no journal of a run " + run + " in " + home.Journals().string());
}

// Raises UsageError for one that is no number, or none of the run's.
std::set<std::int64_t> Wanted(const Arguments& arguments, const ArchivedRun& run) {
  std::set<std::int64_t> archived;
  for (const ArchivedBatch& batch : run.batches) {
    for (const ArchivedRow& row : batch.rows) archived.insert(row.request);
  }
  std::set<std::int64_t> wanted;
  for (const std::string& word : arguments.requests) {
    std::int64_t request = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), request);
    const bool isNumber = error == std::errc{} && end == word.data() + word.size();
    if (!isNumber || !archived.contains(request)) {
      throw UsageError(arguments.run + " has archived no request " + word);
    }
    wanted.insert(request);
  }
  return wanted.empty() ? archived : wanted;
}

void KeepOnly(ArchivedRun& run, const std::set<std::int64_t>& requests) {
  for (ArchivedBatch& batch : run.batches) {
    std::erase_if(batch.rows, [&](const ArchivedRow& row) { return !requests.contains(row.request); });
  }
}

std::string Plural(std::size_t count, const char* what) {
  return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

// Of each request: whose it is, when it was closed, and how many transactions it has.
void Show(const std::vector<ArchivedRow>& rows, const Arguments& arguments, std::ostream& out) {
  struct Request {
    std::string about;
    std::size_t transactions = 0;
  };
  std::map<std::int64_t, Request> requests;
  std::size_t transactions = 0;
  for (const ArchivedRow& row : rows) {
    Request& request = requests[row.request];
    if (row.table == "TRANSACTIONS") {
      ++request.transactions;
      ++transactions;
      continue;
    }
    const auto values = nlohmann::ordered_json::parse(row.json);
    for (const char* column : {"Q_ORIGINATOR", "EMAILID", "ENDSTATUSTIME"}) {
      if (!values.contains(column) || !values[column].is_string()) continue;
      if (values[column].get<std::string>().empty()) continue;
      request.about += ", " + base::WithControlsShown(values[column].get<std::string>());
    }
  }
  for (const auto& [number, request] : requests) {
    out << "request " << number << request.about << ", " << Plural(request.transactions, "transaction")
        << '\n';
  }
  out << Plural(requests.size(), "request") << " with " << Plural(transactions, "transaction")
      << (arguments.apply ? " put back" : " would be put back; --apply does it") << '\n';
}

class Restoring {
 public:
  Restoring(const Arguments& arguments, const Console& console, ADODB::engine::Session& session)
      : arguments_(arguments), console_(console), session_(session), insertion_(session) {}

  int Restore(const ArchivedRun& run) {
    if (arguments_.apply) session_.Begin();
    std::vector<ArchivedRow> rows;  // what fails is told of one of them
    try {
      rows = Deleted(run);
      if (!NoneIsThere(rows)) return Undone();
      if (arguments_.apply) {
        for (const ArchivedRow& row : rows) {
          inserting_ = &row;
          insertion_.Insert(row);
        }
        inserting_ = nullptr;
        session_.Commit();
      }
      Show(rows, arguments_, console_.out);
      if (!rows.empty()) {
        console_.err
            << "note: the next run of Archive archives them again, for they are as old as before; the "
               "archive files were left alone and still hold them\n";
      }
      return kOk;
    } catch (const CannotInsert& error) {
      console_.err << "orvane-host: " << error.what() << '\n';
    } catch (const automation::Error& error) {
      TellFailure(error);
    }
    return Undone();
  }

 private:
  // The rows that the run did delete, requests before their transactions. A transaction that the journal is
  // not certain of took place when its rows are gone.
  std::vector<ArchivedRow> Deleted(const ArchivedRun& run) {
    std::vector<ArchivedRow> rows;
    for (const ArchivedBatch& batch : run.batches) {
      const bool tookPlace =
          batch.isCertain || std::none_of(batch.rows.begin(), batch.rows.end(),
                                          [this](const ArchivedRow& row) { return insertion_.IsThere(row); });
      if (tookPlace) {
        rows.insert(rows.end(), batch.rows.begin(), batch.rows.end());
      } else if (!batch.rows.empty()) {
        console_.err << "note: " << Plural(batch.rows.size(), "row") << " of request "
                     << batch.rows.front().request
                     << " and others of one transaction are in the database: the run ended before it was "
                        "committed\n";
      }
    }
    std::stable_partition(rows.begin(), rows.end(),
                          [](const ArchivedRow& row) { return row.table == "QUESTIONHISTORY"; });
    return rows;
  }

  bool NoneIsThere(const std::vector<ArchivedRow>& rows) {
    std::size_t count = 0;
    for (const ArchivedRow& row : rows) {
      if (!insertion_.IsThere(row)) continue;
      if (++count <= kMostShown) {
        console_.err << "orvane-host: " << row.table << ", " << base::WithControlsShown(KeyText(row))
                     << ": is there already\n";
      }
    }
    if (count > kMostShown) console_.err << "orvane-host: and " << count - kMostShown << " more\n";
    return count == 0;
  }

  void TellFailure(const automation::Error& error) {
    console_.err << "orvane-host: ";
    if (inserting_ != nullptr) {
      console_.err << inserting_->table << ", " << base::WithControlsShown(KeyText(*inserting_)) << ": ";
    }
    console_.err << error.Description() << '\n';
    if (inserting_ != nullptr) {
      console_.err
          << "orvane-host: may this account insert into QUESTIONHISTORY and TRANSACTIONS? The jobs need "
             "no such right\n";
    }
    isUnknown_ = inserting_ == nullptr && error.Outcome() == automation::Outcome::Unknown;
  }

  int Undone() {
    if (arguments_.apply) {
      try {
        session_.Rollback();
      } catch (const automation::Error&) {
        // The connection is gone; the engine rolls back by itself.
      }
    }
    console_.err << (isUnknown_
                         ? "orvane-host: the rows may have been put back: see by calling without --apply\n"
                         : "orvane-host: nothing was put back\n");
    return kUnfinished;
  }

  const Arguments& arguments_;
  const Console& console_;
  ADODB::engine::Session& session_;
  RowInsertion insertion_;
  const ArchivedRow* inserting_ = nullptr;
  bool isUnknown_ = false;
};

ArchivedRun WantedRows(const Arguments& arguments, const std::filesystem::path& journal) {
  ArchivedRun run = ReadArchivedRun(journal);
  if (run.rowsWithoutContent > 0) {
    throw NothingToRestore("its journal holds the keys of " + Plural(run.rowsWithoutContent, "deleted row") +
                           " and not the rows; the archive files are all there is of them");
  }
  KeepOnly(run, Wanted(arguments, run));
  return run;
}

int Restore(const Arguments& arguments, const Console& console) {
  const SuiteHome home(arguments.home);
  const Vantrel::SiteFile site = ReadConfiguration(home);
  const std::filesystem::path journal = JournalOf(home, arguments.run);
  ArchivedRun run = WantedRows(arguments, journal);

  automation::Runtime runtime;
  runtime.locale = automation::MakeLocale({.name = automation::LocaleNameFromEnvironment()});
  const automation::RuntimeScope scope(runtime);
  std::unique_ptr<orvane_lock::SuiteLock> lock;
  if (arguments.apply) {
    int exitCode = kOk;
    const EndsWhenAsked endsWhenAsked;
    RunOptions options{.home = arguments.home, .caller = "orvane-host"};
    options.tell = [&console](MessageKind kind, std::string_view what) { Print(console, kind, what); };
    lock = TakeTurn(home, site, options, exitCode);
    if (!lock) return exitCode;
    if (!lock->BeginJob("restore")) {
      console.err << "orvane-host: the lock of the suite's database was lost; nothing was put back\n";
      return kTryAgain;
    }
    // It may be the run that was waited for, which had not come to its end.
    run = WantedRows(arguments, journal);
  }
  const auto providers = DatabaseProviders(home);
  ADODB::engine::ConnectionString text =
      ADODB::engine::ConnectionString::Parse(site.Connection("Orvane", "Orvane"));
  const auto session = ADODB::engine::ProviderOf(providers, text)->Connect(text);
  return Restoring(arguments, console, *session).Restore(run);
}

}  // namespace

int RestoreRequests(const Arguments& arguments, const Console& console) {
  try {
    return Restore(arguments, console);
  } catch (const automation::Error& error) {
    console.err << "orvane-host: " << error.Description() << '\n';
    return orvane_lock::MeansUnreachable(error) ? kUnavailable : kConfiguration;
  } catch (const effects::JournalError& error) {
    console.err << "orvane-host: " << error.what() << '\n';
  } catch (const NothingToRestore& error) {
    console.err << "orvane-host: " << arguments.run << ": nothing can be put back: " << error.what() << '\n';
  }
  return kUnfinished;
}

}  // namespace orvane::host
