#include "platform/adodb/cursor/command_impl.hpp"

#include "platform/adodb/recordset.hpp"
#include "platform/automation/error.hpp"

namespace ADODB::engine {

Connection& CommandImpl::RequiredConnection() const {
  if (!connection_) throw automation::Error(automation::ErrorNumber::ArgumentsInvalid, "ADODB.Command");
  return *connection_;
}

RecordsetPtr CommandImpl::Execute(std::int64_t* recordsAffected, int options) {
  return RequiredConnection().Execute(statement_, recordsAffected, options);
}

RecordsetPtr CommandImpl::ExecuteDelete(Deleted wanted) {
  return RequiredConnection().ExecuteDelete(statement_, wanted);
}

}  // namespace ADODB::engine
