#include "platform/adodb/engine/row_writer.hpp"

#include <limits>
#include <utility>

#include "platform/adodb/engine/engine_error.hpp"
#include "platform/adodb/engine/sql_tokens.hpp"

namespace ADODB::engine {

RowWriter::RowWriter(std::shared_ptr<Link> link, std::string table, TableShape shape,
                     const std::vector<Column>& columns)
    : link_(std::move(link)), table_(std::move(table)), shape_(std::move(shape)), columns_(columns) {
  deleteSql_ = "DELETE FROM " + table_ + KeyCondition();
}

std::string RowWriter::KeyCondition() const {
  const Dialect& dialect = link_->GetSession().GetDialect();
  std::string condition;
  for (const std::string& column : shape_.keyColumns) {
    condition += (condition.empty() ? " WHERE " : " AND ") + dialect.QuotedName(column) + " = ?";
  }
  return condition;
}

void RowWriter::RequireOne(std::int64_t affected) const {
  if (affected == 1) return;
  throw automation::Error(
      kRowChanged, "ADODB.Recordset",
      "Row cannot be located for updating. Some values may have been changed since it was last read.");
}

void RowWriter::Delete(KeyView key) {
  RequireOne(link_->GetSession().Execute(deleteSql_, Parameters(key.begin(), key.end())));
}

Row RowWriter::Update(const Row& row, const Changes& changes) {
  Session& session = link_->GetSession();
  const Dialect& dialect = session.GetDialect();
  std::string sql = "UPDATE " + table_ + " SET ";
  Parameters parameters;
  Row changed = row;
  for (std::size_t i = 0; i < changes.size(); ++i) {
    if (!changes[i]) continue;
    sql += (parameters.empty() ? "" : ",") + dialect.QuotedName(columns_[i].baseColumn) + " = ?";
    parameters.push_back(*changes[i]);
    changed[i] = *changes[i];
    for (std::size_t k = 0; k < shape_.keyColumns.size(); ++k) {
      if (EqualsIgnoringAsciiCase(shape_.keyColumns[k], columns_[i].baseColumn)) {
        changed[columns_.size() + k] = *changes[i];
      }
    }
  }
  if (parameters.empty()) return changed;
  parameters.insert(parameters.end(), row.begin() + static_cast<std::ptrdiff_t>(columns_.size()), row.end());
  RequireOne(session.Execute(sql + KeyCondition(), parameters));
  return changed;
}

Row RowWriter::Insert(const Changes& changes) {
  Session& session = link_->GetSession();
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
  const std::string sql = session.GetDialect().InsertReturning(table_, names, returned);
  const std::unique_ptr<Rows> rows = session.Query(sql, parameters);
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
  return row;
}

automation::Variant Converted(const automation::Variant& value, ColumnType type) {
  if (value.IsNull() || value.IsEmpty()) return automation::Variant::Null();
  switch (type) {
    case ColumnType::Boolean:
      return automation::ToBoolean(value);
    case ColumnType::Integer: {
      const std::int64_t number = automation::ToInt64(value);
      if (number < std::numeric_limits<std::int32_t>::min() ||
          number > std::numeric_limits<std::int32_t>::max()) {
        return number;
      }
      return static_cast<std::int32_t>(number);
    }
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
