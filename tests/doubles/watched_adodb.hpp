// ADO as job code uses it, watched: every object of ADODB.* that a test's code creates is a thin wrapper
// around the real one. The journal says what was asked and what is open; `before` can make any step fail.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/adodb/types.hpp"
#include "platform/automation/class_table.hpp"

namespace orvane_test {

struct OpenedRecordset {
  std::string sql;
  ADODB::CursorType cursor;
  ADODB::LockType lock;
  int options;
  std::int64_t maxRecords = 0;
  ADODB::CursorLocation location = ADODB::CursorLocation::Server;
  friend bool operator==(const OpenedRecordset&, const OpenedRecordset&) = default;
};

struct AdodbJournal {
  std::vector<std::string> connectionStrings;  // of Connection.Open, in order
  std::vector<OpenedRecordset> recordsets;     // of Recordset.Open, in order
  std::vector<std::string> executed;           // texts of Connection.Execute and Command.Execute

  int openConnections = 0;
  int openRecordsets = 0;
  int connectionsLeftOpen = 0;  // let go of without having been closed

  // Called with the name of each step ("Connection.Open", "Recordset.MoveNext", "Field.Value", ...) before it
  // is taken; what it raises is what the step raises.
  std::function<void(std::string_view step)> before;
  // Called with "Connection.CommitTrans" or "Connection.RollbackTrans" after it was done; what it raises is
  // what the step raises, as if the answer had been lost.
  std::function<void(std::string_view step)> after;
  // Called with each text before it is opened or executed; what it raises is what that raises.
  std::function<void(const std::string& sql)> beforeStatement;
  // Called with the name of a column before a value is given to it.
  std::function<void(const std::string& column)> beforeSet;
  // Replaces the record count that record sets report.
  std::function<std::int64_t(std::int64_t actual)> recordCount;
};

// Registers ADODB.Connection, ADODB.Recordset and ADODB.Command in `classes`, as wrappers of those in
// `actual`.
std::shared_ptr<AdodbJournal> RegisterWatchedAdodb(automation::ClassTable& classes,
                                                   std::shared_ptr<automation::ClassTable> actual);

}  // namespace orvane_test
