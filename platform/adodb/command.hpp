// An ADO command: "ADODB.Command".
#pragma once

#include <cstdint>

#include "platform/adodb/connection.hpp"
#include "platform/adodb/statement.hpp"
#include "platform/automation/export.hpp"
#include "platform/automation/object.hpp"

namespace ADODB {

class ORVANE_EXPORT Command : public automation::Object {
 public:
  virtual void SetActiveConnection(const ConnectionPtr& connection) = 0;
  virtual void SetCommandText(const Statement& statement) = 0;
  // Runs the text on the connection as Connection::Execute does; 3001 without a connection.
  virtual RecordsetPtr Execute(std::int64_t* recordsAffected, int options) = 0;
  // As Connection::ExecuteDelete; 3001 without a connection.
  virtual RecordsetPtr ExecuteDelete(Deleted wanted) = 0;
};

using CommandPtr = std::shared_ptr<Command>;

}  // namespace ADODB
