// Inserts, updates and deletes of single rows, each by key and on a statement of its own.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/adodb/engine/key_list.hpp"
#include "platform/adodb/engine/link.hpp"

namespace ADODB::engine {

// The changes of one row: a value for some of the columns of the result.
using Changes = std::vector<std::optional<automation::Variant>>;

class RowWriter {
 public:
  // `columns` are those of the result, `table` its table as the statement wrote it.
  RowWriter(std::shared_ptr<Link> link, std::string table, TableShape shape,
            const std::vector<Column>& columns);

  std::size_t KeyCount() const { return shape_.keyColumns.size(); }
  // Whether the column of the result stands for a column of the table.
  bool CanWrite(std::size_t column) const { return !columns_[column].baseColumn.empty(); }

  // Each fails unless exactly one row of the table was changed: someone else has changed or deleted it.
  void Delete(KeyView key);
  // Gives the row as it is now: the old values and key with the changes put in.
  Row Update(const Row& row, const Changes& changes);

  // The new row, with the number that the database gave it; columns without a value are Null.
  Row Insert(const Changes& changes);

 private:
  std::string KeyCondition() const;
  void RequireOne(std::int64_t affected) const;

  std::shared_ptr<Link> link_;
  std::string table_;
  TableShape shape_;
  const std::vector<Column>& columns_;
  std::string deleteSql_;
};

// `value` in the type that a column of the given type holds: texts become dates by the current locale, and so
// on. Raises 13 for a value that cannot be one; Empty becomes Null.
automation::Variant Converted(const automation::Variant& value, ColumnType type);

}  // namespace ADODB::engine
