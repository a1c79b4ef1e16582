#include "platform/adodb/cursor/recordset_impl.hpp"

#include <typeinfo>
#include <utility>

#include "platform/adodb/cursor/connection_impl.hpp"
#include "platform/adodb/cursor/criterion.hpp"
#include "platform/adodb/cursor/failure.hpp"
#include "platform/adodb/cursor/observed_changes.hpp"

namespace ADODB::engine {

using automation::ErrorNumber;
using automation::Variant;

RecordsetImpl::OpenSet::OpenSet(FieldValues& owner, std::shared_ptr<SharedSession> on, CursorType cursorType,
                                OpenedRows rows, const std::vector<std::string>& names,
                                std::optional<std::vector<std::uint32_t>> order)
    : session(std::move(on)),
      type(cursorType),
      source(std::move(rows.source)),
      writer(std::move(rows.writer)),
      fields(owner, source->Columns(), names, session->GetDialect()),
      position(*session, *source, std::move(order)) {}

RowWriter& RecordsetImpl::OpenSet::Writer() {
  if (!writer) Fail(ErrorNumber::FeatureNotAvailable);
  return *writer;
}

// The statement's condition, which a row of a dynamic cursor must still meet, may be about a column that
// nobody has read.
std::vector<bool> RecordsetImpl::OpenSet::ColumnsToCompare() {
  return position.Reads().ToCompare(position.Ordinal(), type == CursorType::Dynamic);
}

// The value of a criterion comes in the type of the column that it names.
Sought RecordsetImpl::OpenSet::Read(std::string_view text) {
  const Criterion criterion = ParseCriterion(text);
  Sought sought;
  sought.column = fields.IndexOf(criterion.column);
  const Column& column = source->Columns()[sought.column];
  try {
    sought.value = Converted(criterion.value, column.type);
  } catch (const automation::Error&) {
    Fail(ErrorNumber::ArgumentsInvalid);
  }
  sought.bytes = ComparisonBytes(sought.value, session->GetDialect(), column);
  return sought;
}

RecordsetImpl::RecordsetImpl() = default;
RecordsetImpl::~RecordsetImpl() = default;

// --- Opening and closing ---

void RecordsetImpl::SetCursorLocation(CursorLocation location) {
  RequireClosed();
  location_ = location;
}

void RecordsetImpl::SetMaxRecords(std::int64_t count) {
  RequireClosed();
  if (count < 0) Fail(ErrorNumber::ArgumentsInvalid);
  mostRows_ = static_cast<std::size_t>(count);
}

void RecordsetImpl::Open(const Statement& statement, const ConnectionPtr& connection, CursorType cursorType,
                         LockType lockType, int /*options*/) {
  RequireClosed();
  const Connection* const given = connection.get();
  if (given == nullptr || typeid(*given) != typeid(ConnectionImpl)) Fail(ErrorNumber::ArgumentsInvalid);
  std::shared_ptr<SharedSession> session = static_cast<const ConnectionImpl*>(given)->GetSession();
  // Changes are written one by one; gathering them for a later batch is not offered.
  if (lockType == LockType::BatchOptimistic) Fail(ErrorNumber::FeatureNotAvailable);
  if (location_ == CursorLocation::Client) cursorType = CursorType::Static;
  const bool walksByKey = cursorType == CursorType::Keyset || cursorType == CursorType::Dynamic;
  const bool onlyRead = lockType == LockType::ReadOnly && !walksByKey;
  const auto prepared = onlyRead ? session->PrepareRead(statement) : session->Prepare(statement);
  if (prepared.GetTranslation().yieldsRows) {
    OpenPrepared(std::move(session), prepared, cursorType, lockType);
  } else {
    RunAndTell(*session, prepared.values.empty() ? prepared : session->Prepare(statement));
  }
}

void RecordsetImpl::OpenPrepared(std::shared_ptr<SharedSession> session,
                                 const SharedSession::Prepared& prepared, CursorType cursorType,
                                 LockType lockType) {
  set_.reset();
  // A statement that changes rows and yields some cannot be told.
  if (!prepared.GetTranslation().onlyReads && session->Observer() != nullptr) {
    Fail(ErrorNumber::FeatureNotAvailable);
  }
  OpenedRows rows = OpenRows(session, prepared, cursorType, lockType, mostRows_);
  if (!rows.source) return;
  set_.emplace(static_cast<FieldValues&>(*this), std::move(session), cursorType, std::move(rows),
               prepared.GetTranslation().names, std::nullopt);
}

void RecordsetImpl::OpenCopied(std::shared_ptr<SharedSession> session, std::unique_ptr<StaticRows> rows,
                               std::vector<std::uint32_t> order) {
  set_.emplace(static_cast<FieldValues&>(*this), std::move(session), CursorType::Static,
               OpenedRows{std::move(rows), nullptr}, std::vector<std::string>(), std::move(order));
}

void RecordsetImpl::Close() {
  Opened();
  set_.reset();
}

ObjectState RecordsetImpl::State() const {
  // Closing a connection closes what was opened on it.
  return set_ && set_->session->IsOpen() ? ObjectState::Open : ObjectState::Closed;
}

RecordsetImpl::OpenSet& RecordsetImpl::Opened() const {
  if (State() != ObjectState::Open) Fail(ErrorNumber::ObjectClosed);
  return *set_;
}

void RecordsetImpl::RequireClosed() const {
  if (State() == ObjectState::Open) Fail(ErrorNumber::ObjectOpen);
}

// --- Moving and searching ---

bool RecordsetImpl::Bof() const {
  OpenSet& set = Opened();
  return !set.change.Adds() && set.position.IsBof();
}

bool RecordsetImpl::Eof() const {
  OpenSet& set = Opened();
  return !set.change.Adds() && set.position.IsEof();
}

void RecordsetImpl::MoveFirst() {
  Finished().position.MoveFirst();
}

void RecordsetImpl::MoveNext() {
  Finished().position.MoveNext();
}

std::int64_t RecordsetImpl::RecordCount() const {
  const OpenSet& set = Opened();
  const bool isKnown = set.type != CursorType::ForwardOnly && set.type != CursorType::Dynamic;
  return isKnown ? set.position.Count() : -1;
}

void RecordsetImpl::Find(std::string_view text) {
  const Sought sought = Opened().Read(text);
  Finished().position.Find(sought);
}

void RecordsetImpl::SetFilter(std::string_view text) {
  OpenSet& set = Finished();
  set.position.SetFilter(text.empty() ? std::nullopt : std::optional(set.Read(text)));
}

// --- Values ---

ADODB::Fields& RecordsetImpl::Fields() {
  return Opened().fields;
}

const Variant& RecordsetImpl::Value(std::string_view name) {
  return ValueOf(Opened().fields.IndexOf(name));
}

const Variant& RecordsetImpl::Value(std::size_t index) {
  return ValueOf(Opened().fields.Checked(index));
}

const Variant& RecordsetImpl::ValueOf(std::size_t column) {
  OpenSet& set = Opened();
  const PendingChange& change = set.change;
  if (change.Adds() || (change.Edits() && change.HasSet(column))) return change.Value(column);
  const Variant& value = change.Edits() ? change.Value(column) : set.position.Current()[column];
  if (set.writer) set.position.Reads().Note(column);
  return value;
}

void RecordsetImpl::SetValueOf(std::size_t column, const Variant& value) {
  OpenSet& set = Opened();
  if (!set.Writer().CanWrite(column)) Fail(ErrorNumber::FeatureNotAvailable);
  const Row* current = set.change.IsPending() ? nullptr : &set.position.Current();
  if (!set.change.Adds()) set.position.Reads().Note(column);  // what is written over must be what it was
  Variant converted = Converted(value, set.source->Columns()[column].type);
  if (current != nullptr) set.change.BeginEdit(*current, set.fields.Count());
  set.change.Set(column, std::move(converted));
}

std::vector<std::vector<Variant>> RecordsetImpl::GetRows() {
  Position& position = Finished().position;
  if (position.IsEof()) Fail(ErrorNumber::NoCurrentRecord);
  std::vector<std::vector<Variant>> columns(set_->fields.Count());
  for (; !position.IsEof(); position.MoveNext()) {
    const Row& row = position.Current();
    for (std::size_t i = 0; i < columns.size(); ++i) columns[i].push_back(row[i]);
  }
  return columns;
}

// --- Changes ---

RecordsetImpl::OpenSet& RecordsetImpl::Finished() {
  OpenSet& set = Opened();
  if (set.change.IsPending()) Update();
  return set;
}

void RecordsetImpl::AddNew() {
  Opened().Writer();
  OpenSet& set = Finished();
  set.change.BeginAddition(set.fields.Count());
}

void RecordsetImpl::Update() {
  OpenSet& set = Opened();
  RowWriter& writer = set.Writer();
  const Changes& changes = set.change.GetChanges();
  if (set.change.Adds()) {
    set.asWritten = writer.Insert(changes);
    set.position.WasAdded(set.source->Append(set.asWritten), set.asWritten, set.fields.Count());
  } else if (set.change.Edits()) {
    set.asWritten = writer.Update(set.position.Current(), changes, set.ColumnsToCompare());
    set.source->Replace(set.position.Ordinal(), set.asWritten);
    set.position.WasUpdated(set.asWritten, changes);
  }
  set.change.End();
}

void RecordsetImpl::Delete(Affect affect) {
  OpenSet& set = Opened();
  if (affect != Affect::Current) Fail(ErrorNumber::ArgumentsInvalid);
  RowWriter& writer = set.Writer();
  if (set.change.Adds()) Fail(ErrorNumber::NoCurrentRecord);
  const Row& row = set.position.Current();
  set.change.End();
  writer.Delete(row, set.ColumnsToCompare());
  set.position.WasDeleted();
}

}  // namespace ADODB::engine
