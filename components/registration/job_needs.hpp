// What each job needs of the world to do its work, for whoever wants to know before a run whether it is
// there.
#pragma once

#include <span>
#include <string_view>

namespace OrvaneProcess {

enum class DatabaseOf { Suite, Catalogue };

// A table with what a job does to it. Columns are separated by blanks and spelt as in the job's statements.
struct TableNeed {
  DatabaseOf database = DatabaseOf::Suite;
  std::string_view name;
  std::string_view reads = {};  // columns; empty: the table is not read
  bool wholeRows = false;  // it is read by "SELECT *"; the columns are those that must be among the others
  std::string_view inserts = {};  // columns of the rows that are inserted; empty: none are
  std::string_view updates = {};  // columns; empty: none
  bool deletes = false;
};

// Texts live as long as the program.
struct JobNeeds {
  std::string_view progId;
  std::span<const TableNeed> tables;
  bool directory = false;  // without its people the job does harm
  bool mail = false;       // the same of the mail transport
};

// In alphabetical order of the ProgIDs.
std::span<const JobNeeds> NeedsOfJobs();

}  // namespace OrvaneProcess
