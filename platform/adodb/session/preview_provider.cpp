#include "platform/adodb/session/preview_provider.hpp"

#include <exception>
#include <map>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/adodb/sql/tokens.hpp"

namespace ADODB::engine {
namespace {

// Of a copy: nothing but its own disk can fail like that.
bool IsFull(const automation::Error& error) {
  constexpr std::int32_t kIoError = 10;
  constexpr std::int32_t kFull = 13;
  const std::int32_t code = error.NativeCode() & 0xFF;
  return code == kFull || code == kIoError;
}

// The one session behind the connections to a database.
class PreviewTransaction {
 public:
  PreviewTransaction(std::unique_ptr<Session> session, const PreviewOptions& options)
      : session_(std::move(session)), failed_(options.failed), isCopy_(options.isCopy) {
    if (isCopy_) return;
    const Dialect& dialect = session_->GetDialect();
    if (!dialect.BoundLockWaits().empty()) session_->Execute(dialect.BoundLockWaits(), {});
    if (options.longestStatement > std::chrono::seconds(0)) {
      const std::string bound = dialect.BoundStatements(options.longestStatement);
      if (!bound.empty()) session_->Execute(bound, {});
    }
    if (!dialect.TablesWithoutTransactions().empty()) {
      const auto rows = session_->Query(dialect.TablesWithoutTransactions(), {});
      while (rows->Next()) unsafe_.push_back(automation::ToText(rows->Value(0)));
    }
    if (options.holdsLocks) options.holdsLocks();
    session_->Begin();
  }

  ~PreviewTransaction() {
    if (isCopy_) return;
    try {
      session_->Rollback();
    } catch (const std::exception&) {
      // It was lost; the engine has rolled back.
    }
  }
  PreviewTransaction(const PreviewTransaction&) = delete;
  PreviewTransaction& operator=(const PreviewTransaction&) = delete;

  Session& Get() { return *session_; }

  template <class Work>
  auto Do(const Work& work) -> decltype(work()) {
    if (failure_) throw *failure_;
    try {
      return work();
    } catch (const automation::Error& error) {
      const std::optional<PreviewFailure::Kind> kind = KindOf(error);
      if (kind) Fail({*kind, error.Description()}, error);
      throw;
    }
  }

  void RequireTransactional(std::string_view sql) {
    if (unsafe_.empty() || IsRead(sql)) return;
    for (const std::string& name : Names(sql)) {
      for (const std::string& table : unsafe_) {
        if (!EqualsIgnoringAsciiCase(name, table)) continue;
        const automation::Error refused(automation::ErrorNumber::FeatureNotAvailable, "Preview");
        Fail({PreviewFailure::Kind::NotTransactional, table}, refused);
        throw refused;
      }
    }
  }

  // A transaction of one connection. Gives what it is ended by.
  std::string Begin() {
    if (isCopy_ && open_ == 0) {
      Get().Begin();
      ++open_;
      return {};
    }
    const std::string name = "orvane_" + std::to_string(++lastName_);
    Get().Execute(Get().GetDialect().Savepoint(name), {});
    ++open_;
    return name;
  }

  void Commit(const std::string& name) {
    if (name.empty()) {
      Get().Commit();
    } else {
      Release(name);
    }
    --open_;
  }

  void Rollback(const std::string& name) {
    --open_;
    if (name.empty()) return Get().Rollback();
    Get().Execute(Get().GetDialect().RollbackToSavepoint(name), {});
    Release(name);
  }

 private:
  void Release(const std::string& name) {
    const std::string release = Get().GetDialect().ReleaseSavepoint(name);
    if (!release.empty()) Get().Execute(release, {});
  }

  static bool IsRead(std::string_view sql) {
    const std::string_view word = FirstWord(sql);
    return word.empty() || EqualsIgnoringAsciiCase(word, "select");
  }

  std::optional<PreviewFailure::Kind> KindOf(const automation::Error& error) {
    const std::string& state = error.SqlState();
    if (isCopy_) return IsFull(error) ? std::optional(PreviewFailure::Kind::Full) : std::nullopt;
    if (Get().GetDialect().MeansLocked(error)) return PreviewFailure::Kind::Locked;
    if (state.starts_with("53")) return PreviewFailure::Kind::Full;
    if (state.starts_with("08") || !Get().Ping()) return PreviewFailure::Kind::Unreachable;
    return std::nullopt;
  }

  void Fail(const PreviewFailure& failure, const automation::Error& error) {
    failure_ = error;
    if (failed_) failed_(failure);
  }

  const std::unique_ptr<Session> session_;
  const std::function<void(const PreviewFailure&)> failed_;
  const bool isCopy_;
  std::vector<std::string> unsafe_;  // tables
  std::optional<automation::Error> failure_;
  int open_ = 0;  // transactions
  int lastName_ = 0;
};

// One connection's share of it.
class PreviewSession final : public Session {
 public:
  explicit PreviewSession(std::shared_ptr<PreviewTransaction> transaction)
      : transaction_(std::move(transaction)) {}
  ~PreviewSession() override { Reset(); }

  std::unique_ptr<Rows> Query(const Sql& sql, const Parameters& parameters) override {
    return transaction_->Do([&] {
      transaction_->RequireTransactional(sql);
      return transaction_->Get().Query(sql, parameters);
    });
  }
  std::int64_t Execute(const Sql& sql, const Parameters& parameters) override {
    return transaction_->Do([&] {
      transaction_->RequireTransactional(sql);
      return transaction_->Get().Execute(sql, parameters);
    });
  }
  void Begin() override {
    savepoint_ = transaction_->Do([&] { return transaction_->Begin(); });
  }
  void Commit() override {
    transaction_->Do([&] { transaction_->Commit(*savepoint_); });
    savepoint_.reset();
  }
  void Rollback() override {
    const std::string name = *std::exchange(savepoint_, std::nullopt);
    transaction_->Do([&] { transaction_->Rollback(name); });
  }
  // The transaction around all is read committed.
  void SetIsolationLevel(IsolationLevel) override {}
  TableShape Describe(const std::string& table) override {
    return transaction_->Do([&] { return transaction_->Get().Describe(table); });
  }
  std::optional<std::int64_t> ChangeMark() override {
    return transaction_->Do([&] { return transaction_->Get().ChangeMark(); });
  }
  bool Reset() override {
    if (!savepoint_) return true;
    try {
      Rollback();
    } catch (const std::exception&) {
      return false;
    }
    return true;
  }
  bool Ping() override { return true; }
  const Dialect& GetDialect() const override { return transaction_->Get().GetDialect(); }

 private:
  const std::shared_ptr<PreviewTransaction> transaction_;
  std::optional<std::string> savepoint_;  // of the transaction that is open
};

class PreviewProvider final : public Provider {
 public:
  PreviewProvider(std::shared_ptr<Provider> real, PreviewOptions options)
      : real_(std::move(real)), options_(std::move(options)) {}

  std::string_view Name() const override { return real_->Name(); }
  bool ReachesServers() const override { return real_->ReachesServers(); }

  std::unique_ptr<Session> Connect(const ConnectionString& text) override {
    std::shared_ptr<PreviewTransaction>& transaction = transactions_[text.ToString()];
    if (!transaction) transaction = std::make_shared<PreviewTransaction>(Opened(text), options_);
    return std::make_unique<PreviewSession>(transaction);
  }

 private:
  std::unique_ptr<Session> Opened(const ConnectionString& text) {
    try {
      return real_->Connect(text);
    } catch (const automation::Error& error) {
      if (options_.isCopy && options_.failed && IsFull(error)) {
        options_.failed({PreviewFailure::Kind::Full, error.Description()});
      }
      throw;
    } catch (const std::system_error& error) {
      if (options_.failed) options_.failed({PreviewFailure::Kind::Full, error.what()});
      throw automation::Error(automation::ErrorNumber::DiskFull, "Preview");
    }
  }

  const std::shared_ptr<Provider> real_;
  const PreviewOptions options_;
  std::map<std::string, std::shared_ptr<PreviewTransaction>> transactions_;  // by connection string
};

}  // namespace

std::shared_ptr<Provider> MakePreviewProvider(std::shared_ptr<Provider> real, PreviewOptions options) {
  return std::make_shared<PreviewProvider>(std::move(real), std::move(options));
}

}  // namespace ADODB::engine
