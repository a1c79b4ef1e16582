#include "platform/adodb/cursor/recordset_impl.hpp"

#include <algorithm>
#include <typeinfo>
#include <utility>

#include "platform/adodb/cursor/connection_impl.hpp"
#include "platform/adodb/cursor/criterion.hpp"
#include "platform/adodb/cursor/keyed_rows.hpp"
#include "platform/adodb/cursor/loose_rows.hpp"
#include "platform/adodb/cursor/observed_changes.hpp"
#include "platform/adodb/cursor/static_rows.hpp"
#include "platform/automation/error.hpp"

namespace ADODB::engine {
namespace {

using automation::ErrorNumber;
using automation::Variant;

[[noreturn]] void Raise(ErrorNumber number) {
  throw automation::Error(number, "ADODB.Recordset");
}

bool StartsWithSelect(std::string_view sql) {
  const TokenList list = Tokenize(sql.substr(0, 32));
  return !list.tokens.empty() && Is(sql, list.tokens.front(), "select");
}

}  // namespace

const Variant& FieldImpl::Value() const {
  return owner_.ValueOf(place_);
}
void FieldImpl::SetValue(const Variant& value) {
  owner_.SetValueOf(place_, value);
}

// --- Opening and closing ---

void RecordsetImpl::SetCursorLocation(CursorLocation location) {
  RequireClosed();
  location_ = location;
}

void RecordsetImpl::SetMaxRecords(std::int64_t count) {
  RequireClosed();
  if (count < 0) Raise(ErrorNumber::ArgumentsInvalid);
  mostRows_ = static_cast<std::size_t>(count);
}

void RecordsetImpl::Open(const Statement& statement, const ConnectionPtr& connection, CursorType cursorType,
                         LockType lockType, int /*options*/) {
  RequireClosed();
  const Connection* const given = connection.get();
  if (given == nullptr || typeid(*given) != typeid(ConnectionImpl)) Raise(ErrorNumber::ArgumentsInvalid);
  std::shared_ptr<Link> link = static_cast<const ConnectionImpl*>(given)->GetLink();
  // Changes are written one by one; gathering them for a later batch is not offered.
  if (lockType == LockType::BatchOptimistic) Raise(ErrorNumber::FeatureNotAvailable);
  const bool walksByKey = cursorType == CursorType::Keyset || cursorType == CursorType::Dynamic;
  const bool onlyRead = lockType == LockType::ReadOnly && !walksByKey;
  const auto prepared = onlyRead ? link->PrepareRead(statement) : link->Prepare(statement);
  if (!prepared->yieldsRows) {
    RunAndTell(*link, link->Values().empty() ? *prepared : *link->Prepare(statement));
    return;
  }
  OpenTranslated(statement, *prepared, std::move(link), cursorType, lockType);
}

void RecordsetImpl::OpenTranslated(const Statement& statement, const Translation& translation,
                                   std::shared_ptr<Link> link, CursorType cursorType, LockType lockType) {
  Reset();
  type_ = location_ == CursorLocation::Client ? CursorType::Static : cursorType;
  const std::string& sql = translation.statements.front();
  Session& session = link->GetSession();
  // A statement that changes rows may yield some as well.
  if (!StartsWithSelect(sql)) {
    if (link->Observer() != nullptr) Raise(ErrorNumber::FeatureNotAvailable);
    link->GetFreshness().NoteWrite();
  }
  const bool walksByKey = type_ == CursorType::Keyset || type_ == CursorType::Dynamic;
  if (walksByKey || lockType != LockType::ReadOnly) {
    OpenOnTable(link, sql, lockType);
  } else {
    Copy(session, sql, link->Values(), 0);
  }
  if (!source_) return;
  if (!searches_) searches_ = std::make_unique<Searches>(link, *source_, SelectShape());
  handedOut_.Reset(source_->Columns().size());
  NameFields(statement, session.GetDialect());
  link_ = std::move(link);
  GoTo(0, true);
}

void RecordsetImpl::OpenCopied(const Statement& statement, std::shared_ptr<Link> link,
                               std::unique_ptr<RowSource> rows, std::vector<std::uint32_t> order) {
  Reset();
  type_ = CursorType::Static;
  source_ = std::move(rows);
  searches_ = std::make_unique<Searches>(link, *source_, SelectShape());
  handedOut_.Reset(source_->Columns().size());
  NameFields(statement, link->GetSession().GetDialect());
  link_ = std::move(link);
  filter_ = std::move(order);
  GoTo(0, true);
}

// Opens a set whose rows are read again, or changed, one by one, where the statement has such.
void RecordsetImpl::OpenOnTable(const std::shared_ptr<Link>& link, const std::string& sql,
                                LockType lockType) {
  using Address = TableShape::Address;
  Session& session = link->GetSession();
  SelectShape select;
  TableShape table;
  if (ReadSelect(sql, select)) table = session.Describe(select.table);
  const bool addressed = !table.keyColumns.empty();
  const bool walksByKey = type_ == CursorType::Keyset || type_ == CursorType::Dynamic;
  std::vector<Column> keyColumns;
  if (addressed && walksByKey && table.address == Address::WholeRow) {
    auto source = std::make_unique<LooseRows>(link, select, table, type_ == CursorType::Dynamic, mostRows_);
    keyColumns = source->KeyColumns();
    source_ = std::move(source);
  } else if (addressed && walksByKey) {
    source_ = std::make_unique<KeyedRows>(link, select, table, type_ == CursorType::Keyset, mostRows_);
    readsRowsAgain_ = true;
  } else if (addressed && lockType != LockType::ReadOnly) {
    // In the key's order unless the statement says otherwise: engines differ in the index that they walk,
    // and what is written from these rows must not.
    std::string order = select.order;
    if (order.empty() && table.address != Address::WholeRow) {
      for (const std::string& column : table.keyColumns) {
        order +=
            (order.empty() ? "ORDER BY " : ",") + select.name + "." + session.GetDialect().QuotedName(column);
      }
    }
    Copy(session,
         "SELECT " + ListWithKey(select, table, session.GetDialect()) + select.From({}) + " " + order, {},
         table.keyColumns.size());
    if (source_) keyColumns = static_cast<const StaticRows&>(*source_).KeyColumns();
  } else {
    Copy(session, sql, {}, 0);
  }
  if (source_ && addressed && lockType != LockType::ReadOnly) {
    writer_ =
        std::make_unique<RowWriter>(link, select.table, table, source_->Columns(), std::move(keyColumns));
  }
  if (source_) searches_ = std::make_unique<Searches>(link, *source_, std::move(select));
}

// Reads all rows; a statement that yields none, and no columns, leaves the set closed.
void RecordsetImpl::Copy(Session& session, std::string_view sql, const Parameters& parameters,
                         std::size_t keyCount) {
  const std::unique_ptr<Rows> rows = session.Query(sql, parameters);
  if (!rows->Columns().empty()) source_ = std::make_unique<StaticRows>(*rows, keyCount, mostRows_);
}

// An engine that folds names gets the suite's spelling back: that of the statement's own select list, or else
// the dialect's.
void RecordsetImpl::NameFields(const Statement& statement, const Dialect& dialect) {
  std::vector<std::string_view> spelled;
  const std::string_view sql = statement.ToString();
  if (dialect.FoldsNames()) {
    for (const Token& token : Tokenize(sql).tokens) {
      if (Is(sql, token, "from")) break;
      if (token.kind == TokenKind::Word) spelled.push_back(token.In(sql));
    }
  }
  const std::vector<Column>& columns = source_->Columns();
  fields_.reserve(columns.size());
  if (dialect.FoldsNames()) shownNames_.reserve(columns.size());
  for (const Column& column : columns) {
    const std::string* name = &column.name;
    if (dialect.FoldsNames()) {
      std::string shown = dialect.ShownName(column.name);
      for (const std::string_view word : spelled) {
        if (EqualsIgnoringAsciiCase(word, shown)) shown = word;
      }
      name = &shownNames_.emplace_back(std::move(shown));
    }
    fields_.emplace_back(*this, fields_.size(), *name);
  }
}

void RecordsetImpl::Close() {
  RequireOpen();
  Reset();
}

ObjectState RecordsetImpl::State() const {
  // Closing a connection closes what was opened on it.
  return link_ && link_->IsOpen() ? ObjectState::Open : ObjectState::Closed;
}

void RecordsetImpl::Reset() {
  fields_.clear();
  shownNames_.clear();
  searches_.reset();
  writer_.reset();
  readsRowsAgain_ = false;
  source_.reset();
  link_.reset();
  filter_.reset();
  filteredBy_.reset();
  found_.reset();
  adding_ = editing_ = currentGone_ = false;
  row_ = nullptr;
}

void RecordsetImpl::RequireOpen() const {
  if (State() != ObjectState::Open) Raise(ErrorNumber::ObjectClosed);
}

void RecordsetImpl::RequireClosed() const {
  if (State() == ObjectState::Open) Raise(ErrorNumber::ObjectOpen);
}

// --- Moving ---

bool RecordsetImpl::Exists() const {
  return filter_ ? place_ < filter_->size() : source_->Reach(place_);
}

const Row* RecordsetImpl::RowAt(std::size_t ordinal) const {
  std::span<const std::uint32_t> upcoming;
  if (filter_ && place_ < filter_->size()) upcoming = std::span(*filter_).subspan(place_);
  if (readsRowsAgain_) handedOut_.ReadFromDatabase(ordinal);
  return source_->At(ordinal, upcoming);
}

// Steps over records that are gone, to the one that is current or past the end.
void RecordsetImpl::Settle() const {
  if (settled_) return;
  row_ = nullptr;
  for (;; ++place_) {
    eof_ = !Exists();
    if (eof_) break;
    if (source_->IsRemoved(Ordinal())) continue;
    row_ = RowAt(Ordinal());
    if (row_ != nullptr && (!filteredBy_ || Meets(*row_, *filteredBy_))) break;
    row_ = nullptr;
  }
  bof_ = eof_ && fromFront_;
  settled_ = true;
}

void RecordsetImpl::GoTo(std::size_t place, bool fromFront) {
  place_ = place;
  fromFront_ = fromFront;
  settled_ = false;
  currentGone_ = false;
  row_ = nullptr;
  found_.reset();
  handedOut_.Forget();
}

bool RecordsetImpl::Bof() const {
  RequireOpen();
  if (adding_) return false;
  Settle();
  return bof_;
}

bool RecordsetImpl::Eof() const {
  RequireOpen();
  if (adding_) return false;
  Settle();
  return eof_;
}

void RecordsetImpl::MoveFirst() {
  RequireOpen();
  FinishEdit();
  source_->Rewind();
  GoTo(0, true);
  if (!Exists()) Raise(ErrorNumber::NoCurrentRecord);
}

void RecordsetImpl::MoveNext() {
  RequireOpen();
  FinishEdit();
  Settle();
  if (eof_) Raise(ErrorNumber::NoCurrentRecord);
  GoTo(place_ + 1, false);
}

std::int64_t RecordsetImpl::RecordCount() const {
  RequireOpen();
  if (type_ == CursorType::ForwardOnly || type_ == CursorType::Dynamic) return -1;
  if (!filter_) return static_cast<std::int64_t>(source_->LeftCount());
  std::int64_t count = 0;
  for (const std::uint32_t ordinal : *filter_) count += source_->IsRemoved(ordinal) ? 0 : 1;
  return count;
}

// --- Values ---

Field& FieldList::Item(std::string_view name) {
  for (FieldImpl& field : *this) {
    if (EqualsIgnoringAsciiCase(field.Name(), name)) return field;
  }
  Raise(ErrorNumber::ItemNotFound);
}

Field& FieldList::Item(std::size_t index) {
  if (index >= size()) Raise(ErrorNumber::ItemNotFound);
  return (*this)[index];
}

Fields& RecordsetImpl::Fields() {
  RequireOpen();
  return fields_;
}

// There is a current record, and row_ points to it.
void RecordsetImpl::RequireCurrent() {
  Settle();
  if (eof_ || currentGone_) Raise(ErrorNumber::NoCurrentRecord);
  if (row_ != nullptr) return;
  row_ = RowAt(Ordinal());
  // The record that Find met may be another one by now.
  if (row_ != nullptr && found_ && !Meets(*row_, *found_)) row_ = nullptr;
  if (row_ == nullptr) Raise(ErrorNumber::NoCurrentRecord);
}

const Variant& RecordsetImpl::ValueOf(std::size_t column) {
  RequireOpen();
  if (adding_) return edited_[column];
  if (editing_) {
    if (!changes_[column]) handedOut_.Note(column);
    return edited_[column];
  }
  RequireCurrent();
  handedOut_.Note(column);
  return (*row_)[column];
}

RowWriter& RecordsetImpl::Writer() {
  if (!writer_) Raise(ErrorNumber::FeatureNotAvailable);
  return *writer_;
}

void RecordsetImpl::SetValueOf(std::size_t column, const Variant& value) {
  RequireOpen();
  if (!Writer().CanWrite(column)) Raise(ErrorNumber::FeatureNotAvailable);
  if (!adding_ && !editing_) {
    RequireCurrent();
    edited_ = *row_;
    changes_.assign(fields_.size(), std::nullopt);
  }
  if (!adding_) handedOut_.Note(column);  // what is written over must be what it was
  edited_[column] = Converted(value, source_->Columns()[column].type);
  changes_[column] = edited_[column];
  editing_ = true;
}

// --- Changes ---

void RecordsetImpl::FinishEdit() {
  if (adding_ || editing_) Update();
}

void RecordsetImpl::AddNew() {
  RequireOpen();
  Writer();
  FinishEdit();
  adding_ = true;
  changes_.assign(fields_.size(), std::nullopt);
  edited_.assign(fields_.size(), Variant::Null());
}

void RecordsetImpl::Update() {
  RequireOpen();
  if (adding_) {
    asWritten_ = Writer().Insert(changes_);
    const std::size_t ordinal = source_->Append(asWritten_);
    if (filter_) filter_->push_back(static_cast<std::uint32_t>(ordinal));
    GoTo(filter_ ? filter_->size() - 1 : ordinal, false);
    handedOut_.Wrote(ordinal, Changes(fields_.size(), Variant()));
    ShowAsWritten();
    searches_->DropAll();
  } else if (editing_) {
    RequireCurrent();
    const bool comparesAll = type_ == CursorType::Dynamic;
    asWritten_ = Writer().Update(*row_, changes_, handedOut_.ToCompare(Ordinal(), comparesAll));
    source_->Replace(Ordinal(), asWritten_);
    handedOut_.Wrote(Ordinal(), changes_);
    ShowAsWritten();
    for (std::size_t i = 0; i < changes_.size(); ++i) {
      if (changes_[i]) searches_->Drop(i);
    }
  } else {
    Writer();
  }
  adding_ = editing_ = false;
}

// The current record stays as it was written until the set moves.
void RecordsetImpl::ShowAsWritten() {
  row_ = &asWritten_;
  settled_ = true;
  eof_ = bof_ = false;
}

void RecordsetImpl::Delete(Affect affect) {
  RequireOpen();
  if (affect != Affect::Current) Raise(ErrorNumber::ArgumentsInvalid);
  RowWriter& writer = Writer();
  if (adding_) Raise(ErrorNumber::NoCurrentRecord);
  RequireCurrent();
  editing_ = false;
  writer.Delete(*row_, handedOut_.ToCompare(Ordinal(), type_ == CursorType::Dynamic));
  source_->Remove(Ordinal());
  currentGone_ = true;
  row_ = nullptr;
}

// --- Searching ---

// The value of a criterion comes in the type of the column that it names.
RecordsetImpl::Sought RecordsetImpl::ReadCriterion(std::string_view text) const {
  const Criterion criterion = ParseCriterion(text);
  Sought sought;
  while (sought.column < fields_.size() &&
         !EqualsIgnoringAsciiCase(fields_[sought.column].Name(), criterion.column)) {
    ++sought.column;
  }
  if (sought.column == fields_.size()) Raise(ErrorNumber::ItemNotFound);
  const Column& column = source_->Columns()[sought.column];
  try {
    sought.value = Converted(criterion.value, column.type);
  } catch (const automation::Error&) {
    Raise(ErrorNumber::ArgumentsInvalid);
  }
  sought.bytes = ComparisonBytes(sought.value, link_->GetSession().GetDialect(), column);
  return sought;
}

bool RecordsetImpl::Meets(const Row& row, const Sought& sought) const {
  const Column& column = source_->Columns()[sought.column];
  return ComparisonBytes(row[sought.column], link_->GetSession().GetDialect(), column) == sought.bytes;
}

// The place of the first record from the current one on that the index has.
std::optional<std::size_t> RecordsetImpl::PlaceOf(const ValueIndex& index, const Sought& sought) const {
  for (std::size_t from = filter_ ? Ordinal() : place_;;) {
    const auto found = index.FirstFrom(sought.value, from);
    if (!found) return std::nullopt;
    from = *found + 1u;
    if (source_->IsRemoved(*found)) continue;
    if (!filter_) return *found;
    const auto place = std::lower_bound(filter_->begin(), filter_->end(), *found);
    if (place != filter_->end() && *place == *found) {
      return static_cast<std::size_t>(place - filter_->begin());
    }
  }
}

void RecordsetImpl::Find(std::string_view text) {
  RequireOpen();
  const Sought sought = ReadCriterion(text);
  FinishEdit();
  // From the front nothing need be fetched; elsewhere there must be a current record to start from.
  const bool fromFront = !settled_ && fromFront_ && place_ == 0;
  if (!fromFront) Settle();
  if (fromFront ? !Exists() : eof_) Raise(ErrorNumber::NoCurrentRecord);
  // Under a filter the places are those of a list that was made from the index.
  std::size_t place = filter_ ? 0 : place_;
  const auto search = [&](const ValueIndex& index) {
    row_ = nullptr;
    if (!filter_ && !fromFront) place_ = place;
    return PlaceOf(index, sought);
  };
  std::optional<std::size_t> found = search(searches_->IndexOf(sought.column, place));
  if (!found && !filter_ && searches_->MayHaveGained(sought.column, sought.value)) {
    place = place_;
    found = search(searches_->ReadAgain(sought.column, place));
  }
  if (!found) {
    GoTo(filter_ ? filter_->size() : source_->KnownCount(), false);
    return;
  }
  GoTo(*found, false);
  // Known to be there: its row is fetched when it is read.
  settled_ = true;
  eof_ = bof_ = false;
  found_ = sought;
}

void RecordsetImpl::SetFilter(std::string_view text) {
  RequireOpen();
  FinishEdit();
  if (text.empty()) {
    filter_.reset();
    filteredBy_.reset();
  } else {
    const Sought sought = ReadCriterion(text);
    std::size_t place = 0;
    filter_ = searches_->IndexOf(sought.column, place).Find(sought.value);
    filteredBy_ = sought;
  }
  GoTo(0, true);
}

std::vector<std::vector<Variant>> RecordsetImpl::GetRows() {
  RequireOpen();
  FinishEdit();
  Settle();
  if (eof_) Raise(ErrorNumber::NoCurrentRecord);
  std::vector<std::vector<Variant>> columns(fields_.size());
  while (!Eof()) {
    RequireCurrent();
    for (std::size_t i = 0; i < columns.size(); ++i) columns[i].push_back((*row_)[i]);
    MoveNext();
  }
  return columns;
}

}  // namespace ADODB::engine
