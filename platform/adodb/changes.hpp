// Whoever is told of every change that the connections of a class table make, before it becomes permanent.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/automation/error.hpp"
#include "platform/automation/export.hpp"
#include "platform/automation/variant.hpp"

namespace ADODB {

// A column's value, and what its variant does not tell of it.
struct ORVANE_EXPORT NamedValue {
  enum class Form { AsTyped, Decimal, Bytes };

  std::string column;  // as the database spells it
  automation::Variant value;
  Form form = Form::AsTyped;

  bool operator==(const NamedValue&) const = default;
};
using NamedRow = std::vector<NamedValue>;

enum class Change { Insert, Update, Delete };

// Called on the thread that works with the connection. What any member but Failed raises keeps the change, or
// the commit, from being made, and is what the caller of the connection gets.
class ORVANE_EXPORT ChangeObserver {
 public:
  // Stands for what was told, to say later that it failed.
  using Ticket = std::shared_ptr<const void>;

  // As many rows as RowsChange is told of at once, at most.
  static constexpr std::size_t kMostRows = 1000;

  virtual ~ChangeObserver() = default;

  // Whether rows are wanted as they were before their change, and not their keys alone. The answer holds for
  // as long as a connection is open.
  virtual bool WantsRows() const = 0;

  // One row, before its statement is sent. The key is the table's primary key, or all columns of a table
  // without one; of an insert only those columns of it that the database does not number by itself. `before`
  // is the whole row, read and locked in the transaction of its change; nothing for an insert, and where rows
  // are not wanted.
  virtual Ticket RowChanges(Change change, std::string_view table, NamedRow key,
                            std::optional<NamedRow> before) = 0;

  // Rows of one statement, before the transaction commits in which it was run. Where there are more than
  // kMostRows the call is repeated; keys come sorted. `before` has one row for each key, or none at all where
  // rows are not wanted.
  virtual Ticket RowsChange(Change change, std::string_view table, std::vector<NamedRow> keys,
                            std::vector<NamedRow> before) = 0;

  // So many rows of one statement whose keys the engine does not tell, before the transaction commits in
  // which it was run.
  virtual Ticket RowsCounted(Change change, std::string_view table, std::size_t count) = 0;

  // A transaction of the connection's user; those that a single statement has of its own are not told.
  // Rollback is also told of a connection that is closed with its transaction open.
  virtual Ticket Begin() = 0;
  virtual Ticket Commit() = 0;
  virtual Ticket Rollback() = 0;

  virtual void Failed(const Ticket& told, const automation::Error& error) noexcept = 0;
};

}  // namespace ADODB
