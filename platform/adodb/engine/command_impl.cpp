#include "platform/adodb/engine/command_impl.hpp"

#include "platform/adodb/recordset.hpp"
#include "platform/automation/error.hpp"

namespace ADODB::engine {

RecordsetPtr CommandImpl::Execute(std::int64_t* recordsAffected, int options) {
  if (!connection_) throw automation::Error(automation::ErrorNumber::ArgumentsInvalid, "ADODB.Command");
  return connection_->Execute(statement_, recordsAffected, options);
}

}  // namespace ADODB::engine
