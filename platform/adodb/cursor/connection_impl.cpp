#include "platform/adodb/cursor/connection_impl.hpp"

#include <utility>

#include "platform/adodb/cursor/deleted_rows.hpp"
#include "platform/adodb/cursor/observed_changes.hpp"
#include "platform/adodb/cursor/recordset_impl.hpp"

namespace ADODB::engine {
namespace {

[[noreturn]] void Raise(automation::ErrorNumber number) {
  throw automation::Error(number, "ADODB.Connection");
}

}  // namespace

// A record set that is still open keeps the session: a component may hand its rows on and let its connection
// go.
ConnectionImpl::~ConnectionImpl() = default;

const std::shared_ptr<SharedSession>& ConnectionImpl::GetSession() const {
  if (!session_) Raise(automation::ErrorNumber::ObjectClosed);
  return session_;
}

void ConnectionImpl::Open(std::string_view connectionString, std::string_view user, std::string_view password,
                          int /*options*/) {
  if (session_) Raise(automation::ErrorNumber::ObjectOpen);
  session_ = std::make_shared<SharedSession>(pool_, pool_->Acquire(connectionString, user, password));
}

void ConnectionImpl::Close() {
  // The pool rolls back what is still open.
  GetSession()->Close();
  session_.reset();
}

ObjectState ConnectionImpl::State() const {
  return session_ ? ObjectState::Open : ObjectState::Closed;
}

void ConnectionImpl::SetIsolationLevel(IsolationLevel level) {
  GetSession()->GetSession().SetIsolationLevel(level);
}

RecordsetPtr ConnectionImpl::Execute(const Statement& statement, std::int64_t* recordsAffected, int options) {
  const std::shared_ptr<SharedSession>& session = GetSession();
  const SharedSession::Prepared prepared = session->Prepare(statement);
  const bool wantsRows = options == kOptionsUnspecified || (options & kExecuteNoRecords) == 0;
  if (wantsRows && prepared.GetTranslation().yieldsRows) {
    auto records = std::make_shared<RecordsetImpl>();
    records->OpenPrepared(session, prepared, CursorType::ForwardOnly, LockType::ReadOnly);
    if (recordsAffected != nullptr) *recordsAffected = -1;
    return records;
  }
  const std::int64_t affected = RunAndTell(*session, prepared);
  if (recordsAffected != nullptr) *recordsAffected = affected;
  return nullptr;
}

RecordsetPtr ConnectionImpl::ExecuteDelete(const Statement& statement, Deleted wanted) {
  const std::shared_ptr<SharedSession>& session = GetSession();
  DeletedRows deleted = RunDelete(*session, session->Prepare(statement), wanted);
  auto records = std::make_shared<RecordsetImpl>();
  records->OpenCopied(session, std::move(deleted.rows), std::move(deleted.order));
  return records;
}

void ConnectionImpl::BeginTrans() {
  GetSession()->Begin();
}

void ConnectionImpl::CommitTrans() {
  GetSession()->Commit();
}

void ConnectionImpl::RollbackTrans() {
  GetSession()->Rollback();
}

}  // namespace ADODB::engine
