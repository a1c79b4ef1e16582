// An ADO connection: "ADODB.Connection".
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "platform/adodb/statement.hpp"
#include "platform/adodb/types.hpp"
#include "platform/automation/export.hpp"
#include "platform/automation/object.hpp"

namespace ADODB {

class Recordset;
using RecordsetPtr = std::shared_ptr<Recordset>;

class ORVANE_EXPORT Connection : public automation::Object {
 public:
  // Opens the database that the connection string names; an empty user and password leave the string's own.
  // 3705 when it is open already. An engine that refuses raises its own message with SQLSTATE and native
  // code.
  virtual void Open(std::string_view connectionString, std::string_view user, std::string_view password,
                    int options) = 0;

  // Ends an open transaction by rolling it back and gives the connection up. 3704 when it is not open.
  virtual void Close() = 0;

  virtual ObjectState State() const = 0;

  // For transactions begun after the call. 3704 when it is not open.
  virtual void SetIsolationLevel(IsolationLevel level) = 0;

  // Runs one statement. A statement that yields rows returns them in a forward-only read-only record set,
  // unless `options` holds kExecuteNoRecords; any other returns null. `recordsAffected` may be null.
  // Outside a transaction the statement commits by itself: when it fails, Error::Outcome() tells whether its
  // changes may be there.
  virtual RecordsetPtr Execute(const Statement& statement, std::int64_t* recordsAffected, int options) = 0;

  // Runs a DELETE of one table, as Execute does, and gives the rows that it removed, exactly these whatever
  // others do meanwhile: a static read-only set of the table's columns, or of those of its key (the row
  // number where the engine addresses rows by it), in the order of the key. A table without a key gives all
  // columns either way. 3251 when the engine cannot tell: a DELETE of another form, or no key on an engine
  // that does not return what it deletes.
  virtual RecordsetPtr ExecuteDelete(const Statement& statement, Deleted wanted) = 0;

  // Transactions do not nest. 3001 while one is open.
  virtual void BeginTrans() = 0;

  // Makes the transaction's changes permanent. 3001 without a transaction, or when a commit of it has failed.
  // After a failure Error::Outcome() tells whether the changes may be there all the same, and RollbackTrans
  // (or Close) is due either way.
  virtual void CommitTrans() = 0;

  // Undoes the transaction's changes and ends it, also where it raises: then the connection no longer
  // answers, and the engine undoes what was not committed. 3001 without a transaction.
  virtual void RollbackTrans() = 0;
};

using ConnectionPtr = std::shared_ptr<Connection>;

}  // namespace ADODB
