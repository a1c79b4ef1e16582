#include "platform/adodb/session/shared_session.hpp"

#include <algorithm>
#include <exception>
#include <utility>

#include "platform/adodb/sql/checked_statement.hpp"

namespace ADODB::engine {

namespace {

using Kind = KnownStatement::Kind;
using automation::ErrorNumber;

[[noreturn]] void Raise(ErrorNumber number) {
  throw automation::Error(number, "ADODB.Connection");
}

bool HasWideNumber(const Parameters& values) {
  return std::any_of(values.begin(), values.end(), [](const automation::Variant& value) {
    return std::holds_alternative<std::int64_t>(value.Get());
  });
}

}  // namespace

Pool::PooledSession& SharedSession::Pooled() const {
  if (!lease_) Raise(ErrorNumber::ObjectClosed);
  return *lease_;
}

void SharedSession::Close() noexcept {
  if (ChangeObserver* const observer = Observer(); transaction_ != Transaction::None && observer != nullptr) {
    try {
      observer->Rollback();
    } catch (...) {
      // It is rolled back all the same.
    }
  }
  if (lease_) pool_->GiveBack(std::move(lease_));
  transaction_ = Transaction::None;
}

SharedSession::Prepared SharedSession::Prepare(const Statement& statement) {
  // Values are looked at each time: the same text may have other parts inserted.
  CheckValues(statement, GetDialect());
  Pool::PooledSession& pooled = Pooled();
  pooled.values.clear();
  StatementCache::Known known = pooled.statements.Find(Kind::AsWritten, statement);
  if (!known) known = Translated(Kind::AsWritten, FixedText(statement.ToString()), statement);
  return {std::move(known), pooled.values};
}

SharedSession::Prepared SharedSession::PrepareRead(const Statement& statement) {
  Pool::PooledSession& pooled = Pooled();
  const Dialect& dialect = pooled.session->GetDialect();
  if (!dialect.ComparesBoundValuesAsLiterals()) return Prepare(statement);
  const bool onServer = dialect.PreparesOnTheServer();
  Parameters& values = pooled.values;
  if (StatementCache::Known known = pooled.statements.Find(Kind::Bound, statement)) {
    if (!ValuesToBind(statement, values) || (onServer && HasWideNumber(values))) return Prepare(statement);
    return {std::move(known), values};
  }
  std::optional<BoundStatement> bound = BindValues(statement, dialect.NumberParameter());
  // The columns that "*" stands for may change while a server has the statement prepared.
  if (!bound || (onServer && bound->text.find('*') != std::string::npos)) return Prepare(statement);
  StatementCache::Known known =
      Translated(Kind::Bound, FixedText(statement), SqlFragment(std::move(bound->text)));
  if (onServer) return Prepare(statement);  // bound when it comes again
  values = std::move(bound->values);
  return {std::move(known), values};
}

StatementCache::Known SharedSession::Translated(Kind kind, FixedText text, const Statement& statement) {
  const Dialect& dialect = GetDialect();
  return Pooled().statements.Keep(kind, std::move(text), Translate(CheckText(statement, dialect), dialect));
}

std::unique_ptr<Rows> SharedSession::Query(const Prepared& prepared) {
  // A statement that changes rows may yield some as well.
  if (!prepared.GetTranslation().onlyReads) BeforeChange();
  Session& session = GetSession();
  const bool onServer = session.GetDialect().PreparesOnTheServer();
  return session.Query(prepared.known->ForSession(onServer, !prepared.values.empty()), prepared.values);
}

std::int64_t SharedSession::Execute(const Prepared& prepared) {
  BeforeChange();
  Session& session = GetSession();
  const bool onServer = session.GetDialect().PreparesOnTheServer();
  return session.Execute(prepared.known->ForSession(onServer, !prepared.values.empty()), prepared.values);
}

// `known` keeps the statement alive while it runs.
Sql SharedSession::ForSession(StatementCache::Known& known, const std::string& sql, bool hasParameters) {
  known = Pooled().statements.FindComposed(sql);
  if (!known) {
    if (sql.size() > StatementCache::kLongest) return sql;
    Translation translation;
    translation.text = sql;
    known = Pooled().statements.Keep(Kind::Composed, FixedText(sql), std::move(translation));
  }
  return known->ForSession(GetDialect().PreparesOnTheServer(), hasParameters);
}

std::unique_ptr<Rows> SharedSession::Query(const std::string& sql, const Parameters& parameters,
                                           std::string_view table) {
  Session& session = GetSession();
  StatementCache::Known known;
  Sql forSession = ForSession(known, sql, !parameters.empty());
  forSession.SetTable(table);
  return session.Query(forSession, parameters);
}

std::unique_ptr<Rows> SharedSession::Change(const std::string& sql, const Parameters& parameters,
                                            std::string_view table) {
  BeforeChange();
  return Query(sql, parameters, table);
}

std::int64_t SharedSession::Execute(const std::string& sql, const Parameters& parameters) {
  BeforeChange();
  Session& session = GetSession();
  StatementCache::Known known;
  return session.Execute(ForSession(known, sql, !parameters.empty()), parameters);
}

// Inside a transaction as well: not every table takes part in one.
void SharedSession::BeforeChange() {
  pool_->BeforeChange();
  GetFreshness().NoteWrite();
}

// A step of the user's transaction, told before it is made.
void SharedSession::Observed(ChangeObserver::Ticket (ChangeObserver::*tell)(),
                             const std::function<void()>& step) const {
  ChangeObserver* const observer = Observer();
  if (observer == nullptr) return step();
  const ChangeObserver::Ticket told = (observer->*tell)();
  try {
    step();
  } catch (...) {
    observer->Failed(told, automation::PendingError());
    throw;
  }
}

void SharedSession::Begin() {
  Session& session = GetSession();
  if (transaction_ != Transaction::None) Raise(ErrorNumber::ArgumentsInvalid);
  Observed(&ChangeObserver::Begin, [&] { session.Begin(); });
  transaction_ = Transaction::Open;
}

void SharedSession::Commit() {
  Session& session = GetSession();
  // A second commit could succeed with nothing left in the transaction.
  if (transaction_ != Transaction::Open) Raise(ErrorNumber::ArgumentsInvalid);
  BeforeChange();
  transaction_ = Transaction::CommitFailed;  // unless it returns
  Observed(&ChangeObserver::Commit, [&] { session.Commit(); });
  transaction_ = Transaction::None;
}

void SharedSession::Rollback() {
  Session& session = GetSession();
  if (std::exchange(transaction_, Transaction::None) == Transaction::None)
    Raise(ErrorNumber::ArgumentsInvalid);
  GetFreshness().NoteWrite();
  Observed(&ChangeObserver::Rollback, [&] { session.Rollback(); });
}

void SharedSession::InTransaction(const std::function<void()>& work) {
  if (transaction_ != Transaction::None) return work();
  Session& session = GetSession();
  session.Begin();
  transaction_ = Transaction::Open;
  try {
    work();
    BeforeChange();
    session.Commit();
    transaction_ = Transaction::None;
  } catch (...) {
    const std::exception_ptr failure = std::current_exception();
    transaction_ = Transaction::None;
    try {
      session.Rollback();
    } catch (const std::exception&) {
      // The first failure is the one to tell.
    }
    std::rethrow_exception(failure);
  }
}

}  // namespace ADODB::engine
