#include "host/restore/archived_rows.hpp"

#include <nlohmann/json.hpp>
#include <optional>
#include <string_view>
#include <utility>

#include "effects/journal_reader.hpp"

namespace orvane::host {
namespace {

using Json = nlohmann::ordered_json;

bool IsOfRequests(std::string_view table) {
  return table == "QUESTIONHISTORY" || table == "TRANSACTIONS";
}

class Reader {
 public:
  explicit Reader(const std::filesystem::path& journal) {
    const bool isWhole = effects::ReadJournal(journal, [this](const Json& line) { Take(line); });
    // A run that was killed may not have come to do what its last line says; of one that is cut off it has
    // not.
    if (!ended_ && isWhole && !run_.batches.empty() && lastBatch_ == lastSeq_) {
      run_.batches.back().isCertain = false;
    }
  }

  ArchivedRun Result() {
    std::erase_if(run_.batches, [](const ArchivedBatch& batch) { return batch.rows.empty(); });
    return std::move(run_);
  }

 private:
  void Take(const Json& line) {
    const std::string op = line.at("op");
    lastSeq_ = line.at("seq");
    if (op == "run.start") {
      const std::string job = line.at("job");
      if (job != "Archive") {
        throw NothingToRestore("it is a run of " + job + "; only what Archive has deleted is put back");
      }
    } else if (op == "begin") {
      open_.emplace();
    } else if (op == "commit") {
      Commit();
    } else if (op == "rollback") {
      open_.reset();
    } else if (op == "row.delete") {
      const Json key = Json::array({line.at("key")});
      TakeDeletion(line, key, line.contains("before") ? Json::array({line.at("before")}) : Json());
    } else if (op == "rows.delete") {
      TakeDeletion(line, line.at("keys"), line.value("before", Json()));
    } else if (op == "failed") {
      TakeFailure(line.at("of"), line.at("outcome") == "unknown");
    } else if (op == "run.end") {
      ended_ = true;
    }
  }

  struct Deletion {
    std::uint64_t seq;
    std::size_t withoutContent;
    std::vector<ArchivedRow> rows;
  };

  void TakeDeletion(const Json& line, const Json& keys, const Json& before) {
    const std::string table = line.at("table");
    if (!IsOfRequests(table)) return;
    Deletion deletion{lastSeq_, 0, {}};
    for (std::size_t i = 0; i < keys.size(); ++i) {
      if (!before.is_array()) {
        ++deletion.withoutContent;
        continue;
      }
      const Json& row = before.at(i);
      deletion.rows.push_back({table, row.at("Q_ID").get<std::int64_t>(), keys.at(i).dump(), row.dump()});
    }
    if (open_) {
      open_->push_back(std::move(deletion));
    } else {
      // It is a transaction of its own.
      open_ = {std::move(deletion)};
      Commit();
    }
  }

  void Commit() {
    if (!open_) return;
    ArchivedBatch& batch = run_.batches.emplace_back();
    for (Deletion& deletion : *open_) {
      run_.rowsWithoutContent += deletion.withoutContent;
      std::move(deletion.rows.begin(), deletion.rows.end(), std::back_inserter(batch.rows));
    }
    open_.reset();
    lastBatch_ = lastSeq_;
  }

  void TakeFailure(std::uint64_t of, bool isUnknown) {
    if (!run_.batches.empty() && of == lastBatch_) {
      if (isUnknown) {
        run_.batches.back().isCertain = false;
      } else {
        run_.batches.pop_back();
        lastBatch_ = 0;
      }
    } else if (open_) {
      std::erase_if(*open_, [of](const Deletion& deletion) { return deletion.seq == of; });
    }
  }

  ArchivedRun run_;
  std::optional<std::vector<Deletion>> open_;  // of the transaction that is open
  std::uint64_t lastBatch_ = 0;                // the line that committed it
  std::uint64_t lastSeq_ = 0;
  bool ended_ = false;
};

}  // namespace

ArchivedRun ReadArchivedRun(const std::filesystem::path& journal) try {
  return Reader(journal).Result();
} catch (const nlohmann::json::exception& error) {
  throw effects::JournalError(journal.string() + ": " + error.what());
}

}  // namespace orvane::host
