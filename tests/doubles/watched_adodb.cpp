#include "tests/doubles/watched_adodb.hpp"

#include <map>
#include <utility>

#include "platform/adodb/command.hpp"
#include "platform/adodb/connection.hpp"
#include "platform/adodb/recordset.hpp"
#include "platform/automation/runtime.hpp"

namespace orvane_test {
namespace {

using ADODB::ConnectionPtr;
using ADODB::RecordsetPtr;
using automation::Variant;
using JournalPtr = std::shared_ptr<AdodbJournal>;

void BeforeStatement(const JournalPtr& journal, const std::string& sql) {
  if (journal->beforeStatement) journal->beforeStatement(sql);
}

void Step(const JournalPtr& journal, std::string_view name) {
  if (journal->before) journal->before(name);
}

// Counts an object as open from its opening to its closing, at the latest to its end.
class OpenMark {
 public:
  explicit OpenMark(int& count) : count_(count) {}
  ~OpenMark() { Set(false); }
  OpenMark(const OpenMark&) = delete;
  OpenMark& operator=(const OpenMark&) = delete;
  void Set(bool open) {
    if (open != open_) count_ += open ? 1 : -1;
    open_ = open;
  }

 private:
  int& count_;
  bool open_ = false;
};

class WatchedField : public ADODB::Field {
 public:
  WatchedField(JournalPtr journal, ADODB::Field& actual) : journal_(std::move(journal)), actual_(actual) {}
  const std::string& Name() const override { return actual_.Name(); }
  const Variant& Value() const override {
    Step(journal_, "Field.Value");
    return actual_.Value();
  }
  void SetValue(const Variant& value) override {
    Step(journal_, "Field.SetValue");
    if (journal_->beforeSet) journal_->beforeSet(actual_.Name());
    actual_.SetValue(value);
  }

 private:
  JournalPtr journal_;
  ADODB::Field& actual_;
};

class WatchedFields : public ADODB::Fields {
 public:
  WatchedFields(JournalPtr journal, ADODB::Fields& actual) : journal_(std::move(journal)), actual_(actual) {}
  std::size_t Count() const override { return actual_.Count(); }
  ADODB::Field& Item(std::string_view name) override { return Watched(actual_.Item(name)); }
  ADODB::Field& Item(std::size_t index) override { return Watched(actual_.Item(index)); }

 private:
  ADODB::Field& Watched(ADODB::Field& field) {
    std::unique_ptr<WatchedField>& watched = fields_[&field];
    if (!watched) watched = std::make_unique<WatchedField>(journal_, field);
    return *watched;
  }

  JournalPtr journal_;
  ADODB::Fields& actual_;
  std::map<ADODB::Field*, std::unique_ptr<WatchedField>> fields_;
};

class WatchedConnection : public ADODB::Connection {
 public:
  WatchedConnection(JournalPtr journal, ConnectionPtr actual)
      : journal_(std::move(journal)), actual_(std::move(actual)), open_(journal_->openConnections) {}
  ~WatchedConnection() override {
    if (WatchedConnection::State() == ADODB::ObjectState::Open) ++journal_->connectionsLeftOpen;
  }

  void Open(std::string_view connectionString, std::string_view user, std::string_view password,
            int options) override {
    Step(journal_, "Connection.Open");
    journal_->connectionStrings.emplace_back(connectionString);
    actual_->Open(connectionString, user, password, options);
    open_.Set(true);
  }
  void Close() override {
    Step(journal_, "Connection.Close");
    actual_->Close();
    open_.Set(false);
  }
  ADODB::ObjectState State() const override { return actual_->State(); }
  void SetIsolationLevel(ADODB::IsolationLevel level) override {
    Step(journal_, "Connection.SetIsolationLevel");
    actual_->SetIsolationLevel(level);
  }
  RecordsetPtr Execute(const ADODB::Statement& statement, std::int64_t* recordsAffected,
                       int options) override;
  RecordsetPtr ExecuteDelete(const ADODB::Statement& statement, ADODB::Deleted wanted) override;
  void BeginTrans() override {
    Step(journal_, "Connection.BeginTrans");
    actual_->BeginTrans();
  }
  void CommitTrans() override {
    Step(journal_, "Connection.CommitTrans");
    actual_->CommitTrans();
    if (journal_->after) journal_->after("Connection.CommitTrans");
  }
  void RollbackTrans() override {
    Step(journal_, "Connection.RollbackTrans");
    actual_->RollbackTrans();
    if (journal_->after) journal_->after("Connection.RollbackTrans");
  }

  const ConnectionPtr& Actual() const { return actual_; }

 private:
  JournalPtr journal_;
  ConnectionPtr actual_;
  OpenMark open_;
};

ConnectionPtr ActualOf(const ConnectionPtr& connection) {
  const auto watched = std::dynamic_pointer_cast<WatchedConnection>(connection);
  return watched ? watched->Actual() : connection;
}

class WatchedRecordset : public ADODB::Recordset {
 public:
  WatchedRecordset(JournalPtr journal, RecordsetPtr actual)
      : journal_(std::move(journal)), actual_(std::move(actual)), open_(journal_->openRecordsets) {
    open_.Set(actual_->State() == ADODB::ObjectState::Open);
  }

  void SetCursorLocation(ADODB::CursorLocation location) override {
    location_ = location;
    actual_->SetCursorLocation(location);
  }
  void SetMaxRecords(std::int64_t count) override {
    maxRecords_ = count;
    actual_->SetMaxRecords(count);
  }
  void Open(const ADODB::Statement& statement, const ConnectionPtr& connection, ADODB::CursorType cursorType,
            ADODB::LockType lockType, int options) override {
    Step(journal_, "Recordset.Open");
    BeforeStatement(journal_, statement.ToString());
    journal_->recordsets.push_back(
        {statement.ToString(), cursorType, lockType, options, maxRecords_, location_});
    actual_->Open(statement, ActualOf(connection), cursorType, lockType, options);
    open_.Set(actual_->State() == ADODB::ObjectState::Open);
  }
  void Close() override {
    Step(journal_, "Recordset.Close");
    fields_.reset();
    actual_->Close();
    open_.Set(false);
  }
  ADODB::ObjectState State() const override { return actual_->State(); }
  bool Bof() const override { return actual_->Bof(); }
  bool Eof() const override {
    Step(journal_, "Recordset.Eof");
    return actual_->Eof();
  }
  void MoveFirst() override {
    Step(journal_, "Recordset.MoveFirst");
    actual_->MoveFirst();
  }
  void MoveNext() override {
    Step(journal_, "Recordset.MoveNext");
    actual_->MoveNext();
  }
  std::int64_t RecordCount() const override {
    Step(journal_, "Recordset.RecordCount");
    const std::int64_t actual = actual_->RecordCount();
    return journal_->recordCount ? journal_->recordCount(actual) : actual;
  }
  ADODB::Fields& Fields() override {
    if (!fields_) fields_ = std::make_unique<WatchedFields>(journal_, actual_->Fields());
    return *fields_;
  }
  void AddNew() override {
    Step(journal_, "Recordset.AddNew");
    actual_->AddNew();
  }
  void Update() override {
    Step(journal_, "Recordset.Update");
    actual_->Update();
  }
  void Delete(ADODB::Affect affect) override {
    Step(journal_, "Recordset.Delete");
    actual_->Delete(affect);
  }
  void Find(std::string_view criterion) override {
    Step(journal_, "Recordset.Find");
    actual_->Find(criterion);
  }
  void SetFilter(std::string_view criterion) override {
    Step(journal_, "Recordset.SetFilter");
    actual_->SetFilter(criterion);
  }
  std::vector<std::vector<Variant>> GetRows() override {
    Step(journal_, "Recordset.GetRows");
    return actual_->GetRows();
  }

 private:
  JournalPtr journal_;
  RecordsetPtr actual_;
  OpenMark open_;
  std::unique_ptr<WatchedFields> fields_;
  std::int64_t maxRecords_ = 0;
  ADODB::CursorLocation location_ = ADODB::CursorLocation::Server;
};

RecordsetPtr Wrapped(const JournalPtr& journal, RecordsetPtr actual) {
  if (!actual) return nullptr;
  return std::make_shared<WatchedRecordset>(journal, std::move(actual));
}

RecordsetPtr WatchedConnection::Execute(const ADODB::Statement& statement, std::int64_t* recordsAffected,
                                        int options) {
  Step(journal_, "Connection.Execute");
  BeforeStatement(journal_, statement.ToString());
  journal_->executed.push_back(statement.ToString());
  return Wrapped(journal_, actual_->Execute(statement, recordsAffected, options));
}

RecordsetPtr WatchedConnection::ExecuteDelete(const ADODB::Statement& statement, ADODB::Deleted wanted) {
  Step(journal_, "Connection.ExecuteDelete");
  BeforeStatement(journal_, statement.ToString());
  journal_->executed.push_back(statement.ToString());
  return Wrapped(journal_, actual_->ExecuteDelete(statement, wanted));
}

class WatchedCommand : public ADODB::Command {
 public:
  WatchedCommand(JournalPtr journal, ADODB::CommandPtr actual)
      : journal_(std::move(journal)), actual_(std::move(actual)) {}

  void SetActiveConnection(const ConnectionPtr& connection) override {
    actual_->SetActiveConnection(ActualOf(connection));
  }
  void SetCommandText(const ADODB::Statement& statement) override {
    text_ = statement.ToString();
    actual_->SetCommandText(statement);
  }
  RecordsetPtr Execute(std::int64_t* recordsAffected, int options) override {
    Step(journal_, "Command.Execute");
    BeforeStatement(journal_, text_);
    journal_->executed.push_back(text_);
    return Wrapped(journal_, actual_->Execute(recordsAffected, options));
  }
  RecordsetPtr ExecuteDelete(ADODB::Deleted wanted) override {
    Step(journal_, "Command.ExecuteDelete");
    BeforeStatement(journal_, text_);
    journal_->executed.push_back(text_);
    return Wrapped(journal_, actual_->ExecuteDelete(wanted));
  }

 private:
  JournalPtr journal_;
  ADODB::CommandPtr actual_;
  std::string text_;
};

template <class Watched, class Interface>
void RegisterOne(automation::ClassTable& classes, const std::shared_ptr<automation::ClassTable>& actual,
                 const JournalPtr& journal, std::string_view progId) {
  classes.Register(progId, [actual, journal, name = std::string(progId)] {
    return std::make_shared<Watched>(journal, automation::As<Interface>(actual->Create(name)));
  });
}

}  // namespace

JournalPtr RegisterWatchedAdodb(automation::ClassTable& classes,
                                std::shared_ptr<automation::ClassTable> actual) {
  auto journal = std::make_shared<AdodbJournal>();
  RegisterOne<WatchedConnection, ADODB::Connection>(classes, actual, journal, "ADODB.Connection");
  RegisterOne<WatchedRecordset, ADODB::Recordset>(classes, actual, journal, "ADODB.Recordset");
  RegisterOne<WatchedCommand, ADODB::Command>(classes, actual, journal, "ADODB.Command");
  return journal;
}

}  // namespace orvane_test
