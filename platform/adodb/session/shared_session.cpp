#include "platform/adodb/session/shared_session.hpp"

#include <algorithm>
#include <exception>
#include <utility>

#include "platform/adodb/sql/bound_values.hpp"
#include "platform/adodb/sql/checked_statement.hpp"

namespace ADODB::engine {

namespace {

bool HasWideNumber(const Parameters& values) {
  return std::any_of(values.begin(), values.end(), [](const automation::Variant& value) {
    return std::holds_alternative<std::int64_t>(value.Get());
  });
}

}  // namespace

Session& Link::GetSession() const {
  if (!lease_.session) throw automation::Error(automation::ErrorNumber::ObjectClosed, "ADODB.Connection");
  return *lease_.session;
}

void Link::Close() noexcept {
  if (ChangeObserver* const observer = Observer(); inTransaction && observer != nullptr) {
    try {
      observer->Rollback();
    } catch (...) {
      // It is rolled back all the same.
    }
  }
  if (lease_.session) pool_->GiveBack(std::move(lease_));
  lease_ = {};
  inTransaction = commitFailed = false;
}

std::shared_ptr<const Translation> Link::Prepare(const Statement& statement) {
  // Values are looked at each time: the same text may have other parts inserted.
  CheckValues(statement, GetSession().GetDialect());
  lease_.memo->values.clear();
  if (auto known = lease_.memo->Find(statement.ToString())) return known;
  return Translated(statement);
}

std::shared_ptr<const Translation> Link::PrepareRead(const Statement& statement) {
  const Dialect& dialect = GetSession().GetDialect();
  if (!dialect.ComparesBoundValuesAsLiterals()) return Prepare(statement);
  const bool onServer = dialect.PreparesOnTheServer();
  Parameters& values = lease_.memo->values;
  if (auto known = lease_.memo->FindBound(statement)) {
    values.clear();
    if (!ValuesToBind(statement, values) || (onServer && HasWideNumber(values))) return Prepare(statement);
    return known;
  }
  std::optional<BoundStatement> bound = BindValues(statement, dialect.NumberParameter());
  // The columns that "*" stands for may change while a server has the statement prepared.
  if (!bound || (onServer && bound->text.find('*') != std::string::npos)) return Prepare(statement);
  auto translation = Translated(SqlFragment(std::move(bound->text)));
  lease_.memo->KeepBound(statement, translation);
  if (onServer) return Prepare(statement);  // bound when it comes again
  values = std::move(bound->values);
  return translation;
}

std::shared_ptr<const Translation> Link::Translated(const Statement& statement) {
  const Dialect& dialect = GetSession().GetDialect();
  auto translation = std::make_shared<const Translation>(Translate(CheckText(statement, dialect), dialect));
  lease_.memo->Keep(statement.ToString(), translation);
  return translation;
}

void InTransaction(Link& link, const std::function<void()>& work) {
  if (link.inTransaction) return work();
  Session& session = link.GetSession();
  session.Begin();
  try {
    work();
    session.Commit();
  } catch (...) {
    const std::exception_ptr failure = std::current_exception();
    try {
      session.Rollback();
    } catch (const std::exception&) {
      // The first failure is the one to tell.
    }
    std::rethrow_exception(failure);
  }
}

std::int64_t Run(Link& link, const Translation& translation) {
  Session& session = link.GetSession();
  link.GetFreshness().NoteWrite();
  if (translation.statements.size() == 1) return session.Execute(translation.statements.front(), {});
  std::int64_t affected = 0;
  InTransaction(link, [&] {
    for (const std::string& piece : translation.statements) affected += session.Execute(piece, {});
  });
  return affected;
}

}  // namespace ADODB::engine
