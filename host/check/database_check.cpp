#include "host/check/database_check.hpp"

#include <algorithm>
#include <cstddef>
#include <optional>

#include "host/init/databases.hpp"
#include "platform/adodb/recordset.hpp"
#include "platform/automation/error.hpp"
#include "platform/automation/runtime.hpp"
#include "run/lock/suite_lock.hpp"

namespace orvane::host {
namespace {

using ADODB::SqlFragment;

void AddColumns(std::string_view columns, std::vector<std::string>& into) {
  while (!columns.empty()) {
    const std::size_t end = std::min(columns.find(' '), columns.size());
    const std::string column(columns.substr(0, end));
    if (!column.empty() && std::find(into.begin(), into.end(), column) == into.end()) into.push_back(column);
    columns.remove_prefix(std::min(end + 1, columns.size()));
  }
}

std::string Joined(const std::vector<std::string>& items) {
  std::string text;
  for (const std::string& item : items) text += (text.empty() ? "" : ", ") + item;
  return text;
}

class TableCheck {
 public:
  TableCheck(const ADODB::ConnectionPtr& connection, const std::string& where, const TableUse& table,
             Findings& findings)
      : connection_(connection),
        where_(where + ", table " + table.name),
        table_(table),
        findings_(findings) {}

  // False when the table cannot be used at all.
  bool HasColumns() {
    if (table_.reads.empty()) return true;
    if (Fails("SELECT " + (table_.wholeRows ? "*" : Joined(table_.reads)) + " FROM " + table_.name +
              " WHERE 0 = 1")) {
      return NameMissing();
    }
    if (!table_.wholeRows) return true;
    std::vector<std::string> missing;
    for (const std::string& column : table_.reads) {
      if (Fails(Read(column))) missing.push_back(column);
    }
    return TellMissing(missing);
  }

  void CheckRights() {
    std::vector<std::string> refused;
    std::string reason;
    const auto ask = [&](const std::string& right, const std::string& sql) {
      if (const auto failure = Fails("EXPLAIN " + sql)) {
        refused.push_back(right);
        reason = *failure;
      }
    };
    if (table_.deletes) ask("DELETE", "DELETE FROM " + table_.name);
    if (!table_.inserts.empty()) {
      const std::string columns = Joined(table_.inserts);
      ask("INSERT", "INSERT INTO " + table_.name + " (" + columns + ") SELECT " + columns + " FROM " +
                        table_.name + " WHERE 0 = 1");
    }
    for (const std::string& column : table_.updates) {
      ask("UPDATE (" + column + ")", "UPDATE " + table_.name + " SET " + column + " = " + column);
    }
    if (refused.empty()) return;
    findings_.Fail(
        "database.right", where_,
        "the jobs' account may not " + Joined(refused) + ", or the columns are not there: " + reason,
        "grant what the files grants-*.sql of the schema folder grant");
  }

 private:
  std::string Read(const std::string& column) const {
    return "SELECT " + column + " FROM " + table_.name + " WHERE 0 = 1";
  }

  std::optional<std::string> Fails(const std::string& sql) {
    try {
      const ADODB::RecordsetPtr rows =
          connection_->Execute(SqlFragment(sql), nullptr, ADODB::kOptionsUnspecified);
      if (rows) rows->Close();
      return std::nullopt;
    } catch (const automation::Error& error) {
      return error.Description();
    }
  }

  // Of a table that could not be read as the jobs read it: which columns are the reason.
  bool NameMissing() {
    std::vector<std::string> missing;
    std::string reason;
    for (const std::string& column : table_.reads) {
      if (const auto failure = Fails(Read(column))) {
        missing.push_back(column);
        reason = *failure;
      }
    }
    if (missing.empty()) {
      // One by one they can be read: the account lacks the right to the table as a whole.
      reason = Fails("SELECT * FROM " + table_.name + " WHERE 0 = 1").value_or("the columns together");
    } else if (missing.size() < table_.reads.size()) {
      return TellMissing(missing);
    }
    findings_.Fail("database.table", where_, "cannot be read: " + reason,
                   "make it as in the schema folder, or grant SELECT to the jobs' account");
    return false;
  }

  bool TellMissing(const std::vector<std::string>& missing) {
    if (missing.empty()) return true;
    findings_.Fail("database.column", where_, "columns that a job reads are missing: " + Joined(missing),
                   "add them as in the schema folder, or grant SELECT on them");
    return false;
  }

  const ADODB::ConnectionPtr& connection_;
  const std::string where_;
  const TableUse& table_;
  Findings& findings_;
};

bool IsFile(const std::string& connectionString) {
  try {
    return EngineOf(connectionString).IsEmbedded();
  } catch (const automation::Error&) {
    return false;
  }
}

bool Explains(const ADODB::ConnectionPtr& connection) {
  try {
    connection->Execute("EXPLAIN SELECT 1", nullptr, ADODB::kOptionsUnspecified)->Close();
    return true;
  } catch (const automation::Error&) {
    return false;
  }
}

}  // namespace

std::vector<TableUse> TablesOf(std::span<const OrvaneProcess::JobNeeds* const> jobs,
                               OrvaneProcess::DatabaseOf database) {
  std::vector<TableUse> tables;
  for (const OrvaneProcess::JobNeeds* job : jobs) {
    for (const OrvaneProcess::TableNeed& need : job->tables) {
      if (need.database != database) continue;
      auto use = std::find_if(tables.begin(), tables.end(),
                              [&need](const TableUse& table) { return table.name == need.name; });
      if (use == tables.end()) {
        use = tables.emplace(tables.end());
        use->name = need.name;
      }
      AddColumns(need.reads, use->reads);
      AddColumns(need.inserts, use->inserts);
      AddColumns(need.updates, use->updates);
      use->wholeRows = use->wholeRows || need.wholeRows;
      use->deletes = use->deletes || need.deletes;
    }
  }
  return tables;
}

ADODB::ConnectionPtr OpenForCheck(const std::string& connectionString, const std::string& where,
                                  Findings& findings) {
  try {
    auto connection = automation::CreateObject<ADODB::Connection>("ADODB.Connection");
    connection->Open(connectionString, "", "", ADODB::kOptionsUnspecified);
    return connection;
  } catch (const automation::Error& error) {
    if (!IsFile(connectionString) && orvane_lock::MeansUnreachable(error)) {
      findings.FailService("database.unreachable", where, "does not answer: " + error.Description(),
                           "start its server, or mend the way to it");
    } else {
      findings.Fail("database.refused", where, "cannot be opened: " + error.Description(),
                    "mend the connection string or the account");
    }
    return nullptr;
  }
}

void CheckTables(const ADODB::ConnectionPtr& connection, const std::string& where,
                 const std::vector<TableUse>& tables, Findings& findings) {
  const bool explains = Explains(connection);
  if (!explains) {
    findings.Note("database.rights-unknown", where, "this engine tells no rights without running statements",
                  "compare them with the files grants-*.sql of the schema folder");
  }
  for (const TableUse& table : tables) {
    TableCheck check(connection, where, table, findings);
    if (check.HasColumns() && explains) check.CheckRights();
  }
}

}  // namespace orvane::host
