#include "platform/adodb/cursor/observed_changes.hpp"

#include <utility>

#include "platform/adodb/cursor/deleted_rows.hpp"
#include "platform/adodb/sql/tokens.hpp"

namespace ADODB::engine {
namespace {

NamedValue::Form FormOf(ColumnType type) {
  if (type == ColumnType::Decimal) return NamedValue::Form::Decimal;
  return type == ColumnType::Binary ? NamedValue::Form::Bytes : NamedValue::Form::AsTyped;
}

}  // namespace

NamedValue Named(const Column& column, const automation::Variant& value, const Dialect& dialect) {
  return {dialect.ShownName(column.baseColumn.empty() ? column.name : column.baseColumn), value,
          FormOf(column.type)};
}

NamedRow NamedCurrent(const Rows& rows, const Dialect& dialect) {
  NamedRow row;
  const std::vector<Column>& columns = rows.Columns();
  row.reserve(columns.size());
  for (std::size_t i = 0; i < columns.size(); ++i) row.push_back(Named(columns[i], rows.Value(i), dialect));
  return row;
}

NamedRow NamedKey(const std::vector<std::string>& key, const NamedRow& whole) {
  if (key.empty()) return whole;
  NamedRow named;
  for (const std::string& column : key) {
    for (const NamedValue& value : whole) {
      if (EqualsIgnoringAsciiCase(value.column, column)) named.push_back(value);
    }
  }
  return named;
}

void TellAndMake(ChangeObserver& observer, Change change, std::string_view table, NamedRow key,
                 std::optional<NamedRow> before, const std::function<void()>& make) {
  const ChangeObserver::Ticket told = observer.RowChanges(change, table, std::move(key), std::move(before));
  try {
    make();
  } catch (...) {
    observer.Failed(told, automation::PendingError());
    throw;
  }
}

namespace {

[[noreturn]] void CannotTell() {
  throw automation::Error(automation::ErrorNumber::FeatureNotAvailable, "ADODB.Connection",
                          "This run is recorded, and of this statement it cannot be told what it changes.");
}

std::int64_t RunAndCount(SharedSession& session, const SharedSession::Prepared& prepared,
                         const ChangeShape& shape) {
  ChangeObserver& observer = *session.Observer();
  std::int64_t affected = 0;
  ChangeObserver::Ticket told;
  try {
    session.InTransaction([&] {
      affected = session.Execute(prepared);
      if (affected < 0) CannotTell();
      if (affected > 0) {
        told = observer.RowsCounted(shape.change, shape.table, static_cast<std::size_t>(affected));
      }
    });
  } catch (...) {
    if (told) observer.Failed(told, automation::PendingError());
    throw;
  }
  return affected;
}

}  // namespace

std::int64_t RunAndTell(SharedSession& session, const SharedSession::Prepared& prepared) {
  const Translation& translation = prepared.GetTranslation();
  if (session.Observer() == nullptr || translation.onlyReads) return session.Execute(prepared);
  if (!translation.deletion) {
    if (!translation.change) CannotTell();
    return RunAndCount(session, prepared, *translation.change);
  }
  return static_cast<std::int64_t>(RunDelete(session, prepared, Deleted::Keys).order.size());
}

}  // namespace ADODB::engine
