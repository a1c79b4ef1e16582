#include "tests/doubles/faulty_provider.hpp"

#include <algorithm>
#include <utility>

namespace orvane_test {
namespace {

using ADODB::engine::Column;
using ADODB::engine::Parameters;
using ADODB::engine::Rows;
using ADODB::engine::Session;
using ADODB::engine::Sql;

class CountedRows : public Rows {
 public:
  CountedRows(std::unique_ptr<Rows> inner, std::shared_ptr<Faults> faults)
      : inner_(std::move(inner)), faults_(std::move(faults)) {
    faults_->mostOpenRows = std::max(faults_->mostOpenRows, ++faults_->openRows);
  }
  ~CountedRows() override { --faults_->openRows; }
  const std::vector<Column>& Columns() const override { return inner_->Columns(); }
  bool Next() override {
    const bool more = inner_->Next();
    faults_->rows += more ? 1 : 0;
    return more;
  }
  void ReadInto(std::size_t column, automation::Variant& into) const override {
    inner_->ReadInto(column, into);
  }

 private:
  std::unique_ptr<Rows> inner_;
  std::shared_ptr<Faults> faults_;
};

class FaultySession : public Session {
 public:
  FaultySession(std::unique_ptr<Session> inner, std::shared_ptr<Faults> faults)
      : inner_(std::move(inner)), faults_(std::move(faults)) {
    ++faults_->openSessions;
  }
  ~FaultySession() override { --faults_->openSessions; }

  std::unique_ptr<Rows> Query(const Sql& sql, const Parameters& parameters) override {
    Pass(sql);
    return std::make_unique<CountedRows>(inner_->Query(sql, parameters), faults_);
  }
  std::int64_t Execute(const Sql& sql, const Parameters& parameters) override {
    Pass(sql);
    return inner_->Execute(sql, parameters);
  }
  void Begin() override {
    ++faults_->begins;
    inner_->Begin();
  }
  void Commit() override {
    ++faults_->commits;
    if (faults_->failCommit) Fail();
    inner_->Commit();
  }
  void Rollback() override {
    ++faults_->rollbacks;
    inner_->Rollback();
  }
  void SetIsolationLevel(ADODB::IsolationLevel level) override { inner_->SetIsolationLevel(level); }
  ADODB::engine::TableShape Describe(const std::string& table) override { return inner_->Describe(table); }
  std::optional<std::int64_t> ChangeMark() override { return inner_->ChangeMark(); }
  bool Reset() override { return inner_->Reset() && !dead_; }
  bool Ping() override { return inner_->Ping() && !dead_; }
  const ADODB::engine::Dialect& GetDialect() const override { return inner_->GetDialect(); }

 private:
  void Pass(std::string_view sql) {
    faults_->statements.emplace_back(sql);
    if (faults_->before) faults_->before(sql);
    const bool matches =
        !faults_->failMatching.empty() && sql.find(faults_->failMatching) != std::string_view::npos;
    const bool counted = faults_->failAfter > 0 && --faults_->failAfter == 0;
    if (matches || counted) Fail();
  }
  [[noreturn]] void Fail() {
    dead_ = faults_->sessionsDie;
    throw faults_->error;
  }

  std::unique_ptr<Session> inner_;
  std::shared_ptr<Faults> faults_;
  bool dead_ = false;
};

}  // namespace

std::unique_ptr<Session> FaultyProvider::Connect(const ADODB::engine::ConnectionString& text) {
  ++faults_->connects;
  if (faults_->failConnect) throw faults_->error;
  return std::make_unique<FaultySession>(inner_->Connect(text), faults_);
}

}  // namespace orvane_test
