// The rows that a run of the archive job deleted, as its journal tells of them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

namespace orvane::host {

struct ArchivedRow {
  std::string table;
  std::int64_t request = 0;
  std::string key;   // JSON: the table's key with its values
  std::string json;  // the whole row as it was
};

// What was deleted in one transaction.
struct ArchivedBatch {
  // Whether the transaction was committed for certain. Otherwise the database alone can tell: it has all of
  // the rows, or none.
  bool isCertain = true;
  std::vector<ArchivedRow> rows;
};

struct ArchivedRun {
  std::vector<ArchivedBatch> batches;  // committed, or perhaps committed
  std::size_t rowsWithoutContent = 0;  // of a journal that has keys alone
};

// A journal that nothing can be restored from; what() says why.
class NothingToRestore : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Reads the journal of an archive run, one that was killed too.
// FAILS: effects::JournalError; NothingToRestore for a run of another job.
ArchivedRun ReadArchivedRun(const std::filesystem::path& journal);

}  // namespace orvane::host
