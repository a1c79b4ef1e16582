#include "platform/adodb/cursor/row_writer.hpp"

#include <algorithm>
#include <utility>

#include "platform/adodb/cursor/observed_changes.hpp"
#include "platform/adodb/cursor/still_reads.hpp"
#include "platform/adodb/sql/engine_error.hpp"
#include "platform/adodb/sql/tokens.hpp"

namespace ADODB::engine {

RowWriter::RowWriter(std::shared_ptr<SharedSession> session, std::string table, TableShape shape,
                     const std::vector<Column>& columns, std::vector<Column> keyColumns)
    : session_(std::move(session)),
      table_(std::move(table)),
      shape_(std::move(shape)),
      columns_(columns),
      keyColumns_(std::move(keyColumns)) {}

const RowWriter::Condition& RowWriter::ConditionFor(const std::vector<bool>& compared) {
  if (condition_ && condition_->compared == compared) return *condition_;
  const Dialect& dialect = session_->GetDialect();
  Condition made{.compared = compared, .text = {}, .values = {}, .deletion = {}};
  const auto add = [&](const std::string& term) { made.text += (made.text.empty() ? "" : " AND ") + term; };
  const auto compare = [&](const Column& column, std::size_t place) {
    add(made.values.emplace_back(place, StillReads(dialect, column)).second.condition);
  };
  if (shape_.address == TableShape::Address::WholeRow) {
    for (std::size_t k = 0; k < keyColumns_.size(); ++k) compare(keyColumns_[k], columns_.size() + k);
    made.deletion = dialect.DeleteOne(table_, made.text);
  } else {
    for (const std::string& column : shape_.keyColumns) add(dialect.QuotedName(column) + " = ?");
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      if (compared[i] && CanWrite(i)) compare(columns_[i], i);
    }
    made.deletion = "DELETE FROM " + table_ + " WHERE " + made.text;
  }
  return condition_.emplace(std::move(made));
}

void RowWriter::BindCondition(const Row& row, const Condition& condition, Parameters& parameters) const {
  if (shape_.address != TableShape::Address::WholeRow) {
    parameters.insert(parameters.end(), row.begin() + static_cast<std::ptrdiff_t>(columns_.size()),
                      row.end());
  }
  const Dialect& dialect = session_->GetDialect();
  for (const auto& [place, stillReads] : condition.values) stillReads.Bind(dialect, row[place], parameters);
}

void RowWriter::RequireOne(std::int64_t affected) const {
  if (affected == 1) return;
  throw automation::Error(
      kRowChanged, "ADODB.Recordset",
      "Row cannot be located for updating. Some values may have been changed since it was last read.");
}

void RowWriter::Delete(const Row& row, const std::vector<bool>& compared) {
  const Condition& condition = ConditionFor(compared);
  Parameters parameters;
  parameters.reserve(shape_.keyColumns.size() + condition.values.size());
  BindCondition(row, condition, parameters);
  const auto make = [&] { RequireOne(session_->Execute(condition.deletion, parameters)); };
  Observed(Change::Delete, row, condition, std::cref(make));
}

Row RowWriter::Update(const Row& row, const Changes& changes, const std::vector<bool>& compared) {
  const Dialect& dialect = session_->GetDialect();
  std::string assignments;
  Parameters parameters;
  Row changed = row;
  for (std::size_t i = 0; i < changes.size(); ++i) {
    if (!changes[i]) continue;
    assignments += (parameters.empty() ? "" : ",") + dialect.QuotedName(columns_[i].baseColumn) + " = ?";
    parameters.push_back(*changes[i]);
    changed[i] = *changes[i];
    for (std::size_t k = 0; k < shape_.keyColumns.size(); ++k) {
      if (EqualsIgnoringAsciiCase(shape_.keyColumns[k], columns_[i].baseColumn)) {
        changed[columns_.size() + k] = *changes[i];
      }
    }
  }
  if (parameters.empty()) return changed;
  const Condition& condition = ConditionFor(compared);
  BindCondition(row, condition, parameters);
  const std::string sql = "UPDATE " + table_ + " SET " + assignments + " WHERE " + condition.text;
  Observed(Change::Update, row, condition, [&] {
    switch (shape_.address) {
      case TableShape::Address::Key:
        RequireOne(session_->Execute(sql, parameters));
        break;
      case TableShape::Address::WholeRow:
        RequireOne(session_->Execute(dialect.UpdateOne(table_, assignments, condition.text), parameters));
        break;
      case TableShape::Address::Place: {
        const std::unique_ptr<Rows> rows =
            session_->Change(sql + " RETURNING " + dialect.QuotedName(shape_.keyColumns.front()), parameters);
        RequireOne(rows->Next() ? 1 : 0);
        changed.back() = rows->Value(0);
        while (rows->Next()) {
        }
        break;
      }
    }
  });
  return changed;
}

Row RowWriter::Insert(const Changes& changes) {
  std::vector<std::string> names;
  Parameters parameters;
  Row row(columns_.size() + shape_.keyColumns.size(), automation::Variant::Null());
  for (std::size_t i = 0; i < changes.size(); ++i) {
    if (!changes[i]) continue;
    names.push_back(columns_[i].baseColumn);
    parameters.push_back(*changes[i]);
    row[i] = *changes[i];
  }
  std::vector<std::string> returned = shape_.keyColumns;
  if (shape_.generatedColumn) returned.push_back(*shape_.generatedColumn);
  const std::string sql = session_->GetDialect().InsertReturning(table_, names, returned);
  const auto insert = [&] {
    const std::unique_ptr<Rows> rows = session_->Change(sql, parameters);
    RequireOne(rows->Next() ? 1 : 0);
    for (std::size_t k = 0; k < returned.size(); ++k) {
      const automation::Variant value = rows->Value(k);
      if (k < shape_.keyColumns.size()) row[columns_.size() + k] = value;
      for (std::size_t i = 0; i < columns_.size(); ++i) {
        if (EqualsIgnoringAsciiCase(returned[k], columns_[i].baseColumn)) row[i] = value;
      }
    }
    // Run the statement to its end: only then is the row committed.
    while (rows->Next()) {
    }
  };
  if (ChangeObserver* const observer = session_->Observer(); observer != nullptr) {
    TellAndMake(*observer, Change::Insert, table_, KeyOf(changes), std::nullopt, insert);
  } else {
    insert();
  }
  return row;
}

void RowWriter::Observed(Change change, const Row& row, const Condition& condition,
                         const std::function<void()>& make) {
  ChangeObserver* const observer = session_->Observer();
  if (observer == nullptr) return make();
  std::optional<NamedRow> key = KeyOf(row);
  if (key && !observer->WantsRows()) {
    return TellAndMake(*observer, change, table_, std::move(*key), std::nullopt, make);
  }
  // Told before the commit; a failure of that is the change's.
  ChangeObserver::Ticket told;
  try {
    session_->InTransaction([&] {
      std::optional<NamedRow> before = Lock(row, condition);
      RequireOne(before ? 1 : 0);
      NamedRow named = NamedKey(shape_.primaryKey, *before);
      if (!observer->WantsRows()) before.reset();
      told = observer->RowChanges(change, table_, std::move(named), std::move(before));
      make();
    });
  } catch (...) {
    if (told) observer->Failed(told, automation::PendingError());
    throw;
  }
}

std::optional<NamedRow> RowWriter::KeyOf(const Row& row) const {
  const Dialect& dialect = session_->GetDialect();
  NamedRow key;
  for (const std::string& name : shape_.primaryKey) {
    const auto isIt = [&](const Column& column) { return EqualsIgnoringAsciiCase(column.baseColumn, name); };
    const auto found = std::find_if(columns_.begin(), columns_.end(), isIt);
    const auto address = std::find(shape_.keyColumns.begin(), shape_.keyColumns.end(), name);
    if (found == columns_.end() && address == shape_.keyColumns.end()) return std::nullopt;
    const std::size_t place =
        address != shape_.keyColumns.end()
            ? columns_.size() + static_cast<std::size_t>(address - shape_.keyColumns.begin())
            : static_cast<std::size_t>(found - columns_.begin());
    Column column;
    if (found != columns_.end()) column = *found;
    column.baseColumn = name;
    key.push_back(Named(column, row[place], dialect));
  }
  return key.empty() ? std::nullopt : std::optional(std::move(key));
}

NamedRow RowWriter::KeyOf(const Changes& inserted) const {
  const Dialect& dialect = session_->GetDialect();
  NamedRow key;
  const auto add = [&](std::size_t i) {
    key.push_back(Named(columns_[i], inserted[i] ? *inserted[i] : automation::Variant::Null(), dialect));
  };
  for (const std::string& name : shape_.primaryKey) {
    if (shape_.generatedColumn == name) continue;
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      if (EqualsIgnoringAsciiCase(columns_[i].baseColumn, name)) add(i);
    }
  }
  for (std::size_t i = 0; shape_.primaryKey.empty() && i < columns_.size(); ++i) {
    if (CanWrite(i) && shape_.generatedColumn != columns_[i].baseColumn) add(i);
  }
  return key;
}

std::optional<NamedRow> RowWriter::Lock(const Row& row, const Condition& condition) const {
  const Dialect& dialect = session_->GetDialect();
  std::string where;
  Parameters parameters;
  if (shape_.address == TableShape::Address::WholeRow) {
    where = condition.text;
    BindCondition(row, condition, parameters);
  } else {
    for (const std::string& column : shape_.keyColumns) {
      where += (where.empty() ? "" : " AND ") + dialect.QuotedName(column) + " = ?";
    }
    parameters.assign(row.begin() + static_cast<std::ptrdiff_t>(columns_.size()), row.end());
  }
  const std::unique_ptr<Rows> rows =
      session_->Query(dialect.LockedSelect("*", table_, "WHERE " + where), parameters);
  std::optional<NamedRow> found;
  while (rows->Next()) {
    if (!found) found = NamedCurrent(*rows, dialect);
  }
  return found;
}

automation::Variant Converted(const automation::Variant& value, ColumnType type) {
  if (value.IsNull() || value.IsEmpty()) return automation::Variant::Null();
  switch (type) {
    case ColumnType::Boolean:
      return automation::ToBoolean(value);
    case ColumnType::Integer:
      return OfWhole(automation::ToInt64(value));
    case ColumnType::Decimal:
    case ColumnType::Double:
      if (std::holds_alternative<std::int32_t>(value.Get()) ||
          std::holds_alternative<std::int64_t>(value.Get())) {
        return value;
      }
      return automation::ToDouble(value);
    case ColumnType::DateTime:
      return automation::ToDateTime(value);
    case ColumnType::Text:
    case ColumnType::Binary:
      break;
  }
  return automation::ToText(value);
}

}  // namespace ADODB::engine
