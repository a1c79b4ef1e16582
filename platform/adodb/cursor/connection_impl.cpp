#include "platform/adodb/cursor/connection_impl.hpp"

#include "platform/adodb/cursor/deleted_rows.hpp"
#include "platform/adodb/cursor/observed_changes.hpp"
#include "platform/adodb/cursor/recordset_impl.hpp"

namespace ADODB::engine {
namespace {

[[noreturn]] void Raise(automation::ErrorNumber number) {
  throw automation::Error(number, "ADODB.Connection");
}

// A step of the transaction, told before it is made.
template <class Step>
void Observed(Link& link, ChangeObserver::Ticket (ChangeObserver::*tell)(), const Step& step) {
  ChangeObserver* const observer = link.Observer();
  if (observer == nullptr) return step();
  const ChangeObserver::Ticket told = (observer->*tell)();
  try {
    step();
  } catch (...) {
    observer->Failed(told, automation::PendingError());
    throw;
  }
}

}  // namespace

// A record set that is still open keeps the session: a component may hand its rows on and let its connection
// go.
ConnectionImpl::~ConnectionImpl() = default;

const std::shared_ptr<Link>& ConnectionImpl::GetLink() const {
  if (!link_) Raise(automation::ErrorNumber::ObjectClosed);
  return link_;
}

void ConnectionImpl::Open(std::string_view connectionString, std::string_view user, std::string_view password,
                          int /*options*/) {
  if (link_) Raise(automation::ErrorNumber::ObjectOpen);
  link_ = std::make_shared<Link>(pool_, pool_->Acquire(connectionString, user, password));
  level_ = IsolationLevel::ReadCommitted;
}

void ConnectionImpl::Close() {
  GetLink();
  // The pool rolls back what is still open.
  link_->Close();
  link_.reset();
}

ObjectState ConnectionImpl::State() const {
  return link_ ? ObjectState::Open : ObjectState::Closed;
}

void ConnectionImpl::SetIsolationLevel(IsolationLevel level) {
  GetLink()->GetSession().SetIsolationLevel(level);
  level_ = level;
}

RecordsetPtr ConnectionImpl::Execute(const Statement& statement, std::int64_t* recordsAffected, int options) {
  const std::shared_ptr<Link>& link = GetLink();
  const auto prepared = link->Prepare(statement);
  const Translation& translation = *prepared;
  const bool wantsRows = options == kOptionsUnspecified || (options & kExecuteNoRecords) == 0;
  if (wantsRows && translation.yieldsRows) {
    auto records = std::make_shared<RecordsetImpl>();
    records->OpenTranslated(statement, translation, link, CursorType::ForwardOnly, LockType::ReadOnly);
    if (recordsAffected != nullptr) *recordsAffected = -1;
    return records;
  }
  const std::int64_t affected = RunAndTell(*link, translation);
  if (recordsAffected != nullptr) *recordsAffected = affected;
  return nullptr;
}

RecordsetPtr ConnectionImpl::ExecuteDelete(const Statement& statement, Deleted wanted) {
  const std::shared_ptr<Link>& link = GetLink();
  DeletedRows deleted = RunDelete(*link, *link->Prepare(statement), wanted);
  auto records = std::make_shared<RecordsetImpl>();
  records->OpenCopied(statement, link, std::move(deleted.rows), std::move(deleted.order));
  return records;
}

void ConnectionImpl::BeginTrans() {
  Link& link = *GetLink();
  if (link.inTransaction) Raise(automation::ErrorNumber::ArgumentsInvalid);
  Observed(link, &ChangeObserver::Begin, [&] { link.GetSession().Begin(); });
  link.inTransaction = true;
}

void ConnectionImpl::CommitTrans() {
  Link& link = *GetLink();
  // A second commit could succeed with nothing left in the transaction.
  if (!link.inTransaction || link.commitFailed) Raise(automation::ErrorNumber::ArgumentsInvalid);
  link.commitFailed = true;  // unless it returns
  link.GetFreshness().NoteWrite();
  Observed(link, &ChangeObserver::Commit, [&] { link.GetSession().Commit(); });
  link.inTransaction = link.commitFailed = false;
}

void ConnectionImpl::RollbackTrans() {
  Link& link = *GetLink();
  if (!link.inTransaction) Raise(automation::ErrorNumber::ArgumentsInvalid);
  link.inTransaction = link.commitFailed = false;
  link.GetFreshness().NoteWrite();
  Observed(link, &ChangeObserver::Rollback, [&] { link.GetSession().Rollback(); });
}

}  // namespace ADODB::engine
