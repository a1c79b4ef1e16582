// The change of a record that has not been written yet.
#pragma once

#include <cstddef>
#include <optional>
#include <utility>

#include "platform/adodb/cursor/row_writer.hpp"

namespace ADODB::engine {

class PendingChange {
 public:
  bool Adds() const { return kind_ == Kind::Addition; }  // to be inserted
  bool Edits() const { return kind_ == Kind::Edit; }     // to be updated
  bool IsPending() const { return kind_ != Kind::None; }

  void BeginAddition(std::size_t columns) {
    Begin(Kind::Addition, Row(columns, automation::Variant::Null()), columns);
  }
  void BeginEdit(const Row& current, std::size_t columns) { Begin(Kind::Edit, current, columns); }
  void End() { kind_ = Kind::None; }

  // REQUIRES, for all that follows: IsPending().
  void Set(std::size_t column, automation::Variant value) {
    changes_[column] = value;
    row_[column] = std::move(value);
  }
  bool HasSet(std::size_t column) const { return changes_[column].has_value(); }
  const Changes& GetChanges() const { return changes_; }
  const automation::Variant& Value(std::size_t column) const { return row_[column]; }

 private:
  enum class Kind { None, Addition, Edit };

  void Begin(Kind kind, Row row, std::size_t columns) {
    kind_ = kind;
    row_ = std::move(row);
    changes_.assign(columns, std::nullopt);
  }

  Kind kind_ = Kind::None;
  Changes changes_;
  Row row_;  // the record with its changes
};

}  // namespace ADODB::engine
