// Tables, columns and rights of one of a suite's databases.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "components/registration/job_needs.hpp"
#include "host/check/findings.hpp"
#include "platform/adodb/connection.hpp"

namespace orvane::host {

// What several jobs together need of a database: each table once.
struct TableUse {
  std::string name;
  std::vector<std::string> reads;
  bool wholeRows = false;
  std::vector<std::string> inserts;
  std::vector<std::string> updates;
  bool deletes = false;
};
std::vector<TableUse> TablesOf(std::span<const OrvaneProcess::JobNeeds* const> jobs,
                               OrvaneProcess::DatabaseOf database);

// The open database; null, with a finding, when it cannot be opened.
ADODB::ConnectionPtr OpenForCheck(const std::string& connectionString, const std::string& where,
                                  Findings& findings);

// Whether the tables are there with their columns, and the account may do with them what the jobs do. Rights
// are asked for by EXPLAIN, for which an engine wants the same ones and which runs nothing; where an engine
// has no EXPLAIN, a note says that they were not looked at.
void CheckTables(const ADODB::ConnectionPtr& connection, const std::string& where,
                 const std::vector<TableUse>& tables, Findings& findings);

}  // namespace orvane::host
