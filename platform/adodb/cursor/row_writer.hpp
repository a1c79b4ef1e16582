// Inserts, updates and deletes of single rows, each by key and on a statement of its own.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/adodb/changes.hpp"
#include "platform/adodb/cursor/key_list.hpp"
#include "platform/adodb/cursor/still_reads.hpp"
#include "platform/adodb/session/shared_session.hpp"

namespace ADODB::engine {

// The changes of one row: a value for some of the columns of the result.
using Changes = std::vector<std::optional<automation::Variant>>;

// Each change is one statement that finds the row by its key and by the values that its reader was shown: the
// row must still be the one that was read.
class RowWriter {
 public:
  // `columns` are those of the result, `keyColumns` those behind them, `table` the statement's name for its
  // table. The columns must outlive the writer.
  RowWriter(std::shared_ptr<SharedSession> session, std::string table, TableShape shape,
            const std::vector<Column>& columns, std::vector<Column> keyColumns);

  // Whether the column of the result stands for a column of the table.
  bool CanWrite(std::size_t column) const { return !columns_[column].baseColumn.empty(); }

  // Each fails with 80040E38 unless exactly one row of the table was changed. `row` holds its key behind its
  // values; the columns in `compared` must still read as there. Of a table that is addressed by whole rows
  // all columns are compared, and of equal rows one is changed.
  void Delete(const Row& row, const std::vector<bool>& compared);
  // Gives the row as it is now: the old values and key with the changes put in.
  Row Update(const Row& row, const Changes& changes, const std::vector<bool>& compared);

  // The new row, with the number that the database gave it; columns without a value are Null.
  Row Insert(const Changes& changes);

 private:
  // What finds a row again, made once for all rows whose same columns were read.
  struct Condition {
    std::vector<bool> compared;
    std::string text;
    std::vector<std::pair<std::size_t, StillReads>> values;  // by their place in the row
    std::string deletion;                                    // the statement
  };
  const Condition& ConditionFor(const std::vector<bool>& compared);
  // Makes the change of the row, which the session's observer hears of before.
  void Observed(Change change, const Row& row, const Condition& condition, const std::function<void()>& make);
  // The row's key, or all of its columns in a table without one; nothing where the result does not hold them.
  std::optional<NamedRow> KeyOf(const Row& row) const;
  NamedRow KeyOf(const Changes& inserted) const;
  // The row as it is, locked; nothing when it is gone.
  std::optional<NamedRow> Lock(const Row& row, const Condition& condition) const;
  void BindCondition(const Row& row, const Condition& condition, Parameters& parameters) const;
  void RequireOne(std::int64_t affected) const;

  std::shared_ptr<SharedSession> session_;
  std::string table_;
  TableShape shape_;
  const std::vector<Column>& columns_;
  std::vector<Column> keyColumns_;
  std::optional<Condition> condition_;  // used last
};

// `value` in the type that a column of the given type holds: strings become dates by the current locale, and
// so on. Raises 13 for a value that cannot be one; Empty becomes Null.
automation::Variant Converted(const automation::Variant& value, ColumnType type);

}  // namespace ADODB::engine
