// What a run changes outside itself, each change by its kind.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/adodb/changes.hpp"

namespace effects {

struct RowChange {
  ADODB::Change change{};
  std::string table;
  ADODB::NamedRow key;
  // The whole row as it was, when the run keeps rows; empty then for an insert.
  bool tellsBefore = false;
  ADODB::NamedRow before;
};

// Rows of one statement, at most ADODB::ChangeObserver::kMostRows.
struct RowsChange {
  ADODB::Change change{};
  std::string table;
  std::vector<ADODB::NamedRow> keys;  // sorted
  bool tellsBefore = false;
  std::vector<ADODB::NamedRow> before;  // in the order of the keys
  std::size_t withoutKeys = 0;          // how many they are where the keys are not known, and left out
};

// Of the run's own connections.
struct TransactionStep {
  enum class Kind { Begin, Commit, Rollback };
  Kind kind{};
};

struct FileChange {
  enum class Kind { Write, Delete, CreateFolder, DeleteFolder, SaveDocument };
  Kind kind{};
  std::string path;    // the operating system's, the final one where a file is made under another name first
  std::string folder;  // what the change is counted under: the folder that an operator knows it by
};

struct MailSending {
  std::string to;
  std::string subject;
};

// In the folders that the servers of a web farm share.
struct SharedChange {
  enum class Kind { Store, Fetch, Delete, Mark };
  Kind kind{};
  std::string name;    // of the shared item; empty: `path` says what is meant
  std::string path;    // the local file of a store or fetch; the shared place whose old files are deleted
  std::string folder;  // by its name among the shared ones; empty when the call does not say
};

// A call that changes something in another system, or tells it of a change.
struct ComponentCall {
  enum class Kind { Erp, Event };
  Kind kind{};
  std::string component;  // its ProgID or class identifier
  std::string member;
  ADODB::NamedRow arguments;  // by name
};

using Effect = std::variant<RowChange, RowsChange, TransactionStep, FileChange, MailSending, SharedChange,
                            ComponentCall>;

// The name of the effect's kind as journals have it, e.g. "row.delete". Lives as long as the program.
std::string_view OpOf(const Effect& effect);

// What the effect is counted under besides its kind: the table, the folder, the component; empty for mails
// and transactions.
std::string_view SubjectOf(const Effect& effect);

// How much it counts: the rows of a RowsChange, else 1.
std::size_t CountOf(const Effect& effect);

}  // namespace effects
