#include "platform/adodb/engine/recordset_impl.hpp"

#include <algorithm>
#include <typeinfo>
#include <utility>

#include "platform/adodb/engine/connection_impl.hpp"
#include "platform/adodb/engine/criterion.hpp"
#include "platform/adodb/engine/static_rows.hpp"
#include "platform/automation/error.hpp"

namespace ADODB::engine {
namespace {

using automation::ErrorNumber;
using automation::Variant;

[[noreturn]] void Raise(ErrorNumber number) {
  throw automation::Error(number, "ADODB.Recordset");
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
    Run(*link, link->Values().empty() ? *prepared : *link->Prepare(statement));
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
  const bool walksByKey = type_ == CursorType::Keyset || type_ == CursorType::Dynamic;
  if (walksByKey || lockType != LockType::ReadOnly) {
    OpenOnTable(link, sql, lockType);
  } else {
    Copy(session, sql, link->Values(), 0);
  }
  if (!source_) return;
  NameFields(statement, session.GetDialect());
  link_ = std::move(link);
  GoTo(0, true);
}

void RecordsetImpl::OpenCopied(const Statement& statement, std::shared_ptr<Link> link,
                               std::unique_ptr<RowSource> rows, std::vector<std::uint32_t> order) {
  Reset();
  type_ = CursorType::Static;
  source_ = std::move(rows);
  NameFields(statement, link->GetSession().GetDialect());
  link_ = std::move(link);
  filter_ = std::move(order);
  GoTo(0, true);
}

// Opens a set whose rows are walked or changed by their table's key, where the statement has one.
void RecordsetImpl::OpenOnTable(const std::shared_ptr<Link>& link, const std::string& sql,
                                LockType lockType) {
  Session& session = link->GetSession();
  SelectShape select;
  TableShape table;
  if (ReadSelect(sql, select)) table = session.Describe(select.table);
  const bool keyed = !table.keyColumns.empty();
  const bool walksByKey = type_ == CursorType::Keyset || type_ == CursorType::Dynamic;
  if (keyed && walksByKey && select.order.empty()) {
    auto source = std::make_unique<KeyedRows>(link, select, table, type_ == CursorType::Keyset, mostRows_);
    keyed_ = source.get();
    source_ = std::move(source);
  } else if (keyed && lockType != LockType::ReadOnly) {
    std::string keys;
    for (const std::string& column : table.keyColumns) {
      keys += "," + select.name + "." + session.GetDialect().QuotedName(column);
    }
    // In the key's order unless the statement says otherwise: engines differ in the index that they walk,
    // and what is written from these rows must not.
    Copy(session,
         "SELECT " + select.list + keys + select.From({}) + " " +
             (select.order.empty() ? "ORDER BY " + keys.substr(1) : select.order),
         {}, table.keyColumns.size());
  } else {
    Copy(session, sql, {}, 0);
  }
  if (source_ && keyed && lockType != LockType::ReadOnly) {
    writer_ = std::make_unique<RowWriter>(link, select.table, table, source_->Columns());
  }
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
  indexes_.clear();
  writer_.reset();
  keyed_ = nullptr;
  source_.reset();
  link_.reset();
  filter_.reset();
  deleted_.clear();
  deletedCount_ = 0;
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
  return source_->At(ordinal, upcoming);
}

// Steps over records that are gone, to the one that is current or past the end.
void RecordsetImpl::Settle() const {
  if (settled_) return;
  row_ = nullptr;
  for (;; ++place_) {
    eof_ = !Exists();
    if (eof_) break;
    if (IsDeleted(Ordinal())) continue;
    row_ = RowAt(Ordinal());
    if (row_ != nullptr) break;
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
  if (!filter_) return static_cast<std::int64_t>(source_->KnownCount() - deletedCount_);
  std::int64_t count = 0;
  for (const std::uint32_t ordinal : *filter_) count += IsDeleted(ordinal) ? 0 : 1;
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
  if (row_ == nullptr) row_ = RowAt(Ordinal());
  if (row_ == nullptr) Raise(ErrorNumber::NoCurrentRecord);
}

const Variant& RecordsetImpl::ValueOf(std::size_t column) {
  RequireOpen();
  if (adding_ || editing_) return edited_[column];
  RequireCurrent();
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
    const std::size_t ordinal = source_->Append(Writer().Insert(changes_));
    if (filter_) filter_->push_back(static_cast<std::uint32_t>(ordinal));
    GoTo(filter_ ? filter_->size() - 1 : ordinal, false);
    indexes_.clear();
  } else if (editing_) {
    RequireCurrent();
    Row changed = Writer().Update(*row_, changes_);
    source_->Replace(Ordinal(), std::move(changed));
    row_ = nullptr;
    for (std::size_t i = 0; i < changes_.size(); ++i) {
      if (changes_[i]) indexes_.erase(i);
    }
  } else {
    Writer();
  }
  adding_ = editing_ = false;
}

void RecordsetImpl::Delete(Affect affect) {
  RequireOpen();
  if (affect != Affect::Current) Raise(ErrorNumber::ArgumentsInvalid);
  RowWriter& writer = Writer();
  if (adding_) Raise(ErrorNumber::NoCurrentRecord);
  RequireCurrent();
  editing_ = false;
  const std::size_t ordinal = Ordinal();
  writer.Delete(KeyView(*row_).subspan(fields_.size()));
  if (deleted_.size() <= ordinal) deleted_.resize(std::max(source_->KnownCount(), ordinal + 1), false);
  deleted_[ordinal] = true;
  ++deletedCount_;
  currentGone_ = true;
  row_ = nullptr;
}

// --- Searching ---

const ValueIndex& RecordsetImpl::IndexOf(std::size_t column, bool again) {
  if (const auto found = indexes_.find(column); found != indexes_.end() && !again)
    return found->second.values;
  std::optional<std::int64_t> mark;
  if (keyed_ != nullptr && !keyed_->IsFixed()) mark = keyed_->Mark();
  if (again) {
    // The rows' places change with the keys: what was noted about them goes by the new ones.
    indexes_.clear();
    deleted_.clear();
    deletedCount_ = 0;
    const bool atFront = !settled_ && place_ == 0;
    const std::size_t place = keyed_->ReadAgain(place_);
    if (!atFront) place_ = place;
  }
  ValueIndex values(link_->GetSession().GetDialect(), source_->Columns()[column]);
  row_ = nullptr;
  for (std::size_t ordinal = 0; source_->Reach(ordinal); ++ordinal) {
    if (IsDeleted(ordinal)) continue;
    if (const Row* row = source_->At(ordinal, {})) values.Add(ordinal, (*row)[column]);
  }
  values.Finish();
  return indexes_.emplace(column, Index{std::move(values), mark}).first->second.values;
}

// An open set may have gained a row since its index was made. A missing value is then looked for in the
// database itself; after many such questions it is cheaper to read the set again.
bool RecordsetImpl::MayHaveGained(std::size_t column, const Variant& wanted) {
  constexpr int kMostQuestions = 1000;
  if (keyed_ == nullptr || keyed_->IsFixed()) return false;
  Index& index = indexes_.at(column);
  if (keyed_->IsUnchanged(index.mark)) return false;
  return ++index.questions > kMostQuestions || keyed_->Holds(source_->Columns()[column], wanted);
}

// The value of a criterion in the type of the column that it names.
Variant RecordsetImpl::Wanted(const std::string& name, const Variant& value, std::size_t& column) {
  for (column = 0; column < fields_.size(); ++column) {
    if (EqualsIgnoringAsciiCase(fields_[column].Name(), name)) break;
  }
  if (column == fields_.size()) Raise(ErrorNumber::ItemNotFound);
  try {
    return Converted(value, source_->Columns()[column].type);
  } catch (const automation::Error&) {
    Raise(ErrorNumber::ArgumentsInvalid);
  }
}

void RecordsetImpl::Find(std::string_view text) {
  RequireOpen();
  const Criterion criterion = ParseCriterion(text);
  FinishEdit();
  std::size_t column = 0;
  const Variant wanted = Wanted(criterion.column, criterion.value, column);
  // From the front nothing need be fetched; elsewhere there must be a current record to start from.
  if (settled_ || !fromFront_ || place_ != 0) {
    Settle();
    if (eof_) Raise(ErrorNumber::NoCurrentRecord);
  } else if (!Exists()) {
    Raise(ErrorNumber::NoCurrentRecord);
  }
  const auto search = [&](const ValueIndex& index) -> std::optional<std::size_t> {
    for (std::size_t from = filter_ ? Ordinal() : place_;;) {
      const auto found = index.FirstFrom(wanted, from);
      if (!found) return std::nullopt;
      from = *found + 1u;
      if (IsDeleted(*found)) continue;
      if (!filter_) return *found;
      const auto place = std::lower_bound(filter_->begin(), filter_->end(), *found);
      if (place != filter_->end() && *place == *found)
        return static_cast<std::size_t>(place - filter_->begin());
    }
  };
  std::optional<std::size_t> found = search(IndexOf(column, false));
  if (!found && !filter_ && MayHaveGained(column, wanted)) found = search(IndexOf(column, true));
  if (!found) {
    GoTo(filter_ ? filter_->size() : source_->KnownCount(), false);
    return;
  }
  GoTo(*found, false);
  // Known to be there: its row is fetched when it is read.
  settled_ = true;
  eof_ = bof_ = false;
}

void RecordsetImpl::SetFilter(std::string_view text) {
  RequireOpen();
  FinishEdit();
  if (text.empty()) {
    filter_.reset();
  } else {
    const Criterion criterion = ParseCriterion(text);
    std::size_t column = 0;
    const Variant wanted = Wanted(criterion.column, criterion.value, column);
    filter_ = IndexOf(column, false).Find(wanted);
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
