#include "platform/adodb/cursor/opening.hpp"

#include <utility>
#include <vector>

#include "platform/adodb/cursor/keyed_rows.hpp"
#include "platform/adodb/cursor/keyless_rows.hpp"
#include "platform/adodb/cursor/static_rows.hpp"

namespace ADODB::engine {
namespace {

using Address = TableShape::Address;

// A statement that yields no columns is a change: there is nothing to copy.
std::unique_ptr<StaticRows> Copied(Rows& rows, std::size_t keyCount, std::size_t mostRows) {
  return rows.Columns().empty() ? nullptr : std::make_unique<StaticRows>(rows, keyCount, mostRows);
}

// The rows with their key. In the key's order unless the statement says otherwise: engines differ in the
// index that they walk, and what is written from these rows must not.
std::string WithKey(const SelectShape& select, const TableShape& table, const Dialect& dialect) {
  std::string order = select.order;
  if (order.empty() && table.address != Address::WholeRow) {
    for (const std::string& column : table.keyColumns) {
      order += (order.empty() ? "ORDER BY " : ",") + select.name + "." + dialect.QuotedName(column);
    }
  }
  return "SELECT " + select.ListWithKey(table, dialect) + select.From({}) + " " + order;
}

}  // namespace

OpenedRows OpenRows(const std::shared_ptr<SharedSession>& session, const SharedSession::Prepared& prepared,
                    CursorType type, LockType lock, std::size_t mostRows) {
  const bool isDynamic = type == CursorType::Dynamic;
  const bool walksByKey = isDynamic || type == CursorType::Keyset;
  const bool changes = lock != LockType::ReadOnly;
  const std::optional<SelectShape>& select = prepared.GetTranslation().select;
  if (!select || !(walksByKey || changes)) return {Copied(*session->Query(prepared), 0, mostRows), nullptr};
  TableShape table = session->GetSession().Describe(select->table);
  if (table.keyColumns.empty()) return {Copied(*session->Query(prepared), 0, mostRows), nullptr};
  OpenedRows opened;
  std::vector<Column> keyColumns;
  if (!walksByKey) {
    const std::string sql = WithKey(*select, table, session->GetDialect());
    auto copy = Copied(*session->Query(sql, {}, select->WholeTable()), table.keyColumns.size(), mostRows);
    if (copy) keyColumns = copy->KeyColumns();
    opened.source = std::move(copy);
  } else if (table.address == Address::WholeRow) {
    auto keyless = std::make_unique<KeylessRows>(session, *select, table, isDynamic, mostRows);
    keyColumns = keyless->KeyColumns();
    opened.source = std::move(keyless);
  } else {
    opened.source = std::make_unique<KeyedRows>(session, *select, table, isDynamic, mostRows);
  }
  if (changes && opened.source) {
    opened.writer = std::make_unique<RowWriter>(session, select->table, std::move(table),
                                                opened.source->Columns(), std::move(keyColumns));
  }
  return opened;
}

}  // namespace ADODB::engine
