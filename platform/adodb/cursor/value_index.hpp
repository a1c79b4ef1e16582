// Where the values of one column stand: what makes n searches over n rows cost n.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/adodb/sql/dialect.hpp"
#include "platform/automation/variant.hpp"

namespace ADODB::engine {

// The bytes that stand for a value of the column: equal for values that are equal to the database, empty for
// one that equals nothing.
std::string ComparisonBytes(const automation::Variant& value, const Dialect& dialect, const Column& column);

class ValueIndex {
 public:
  ValueIndex(const Dialect& dialect, Column column) : dialect_(dialect), column_(std::move(column)) {}

  void Add(std::size_t ordinal, const automation::Variant& value);
  // To be called after the last Add.
  void Finish();

  // The ordinals of the rows whose value equals `value`, ascending. Texts are equal as the database compares
  // them; Null equals nothing.
  std::vector<std::uint32_t> Find(const automation::Variant& value) const;
  // The first of them that is not before `from`.
  std::optional<std::uint32_t> FirstFrom(const automation::Variant& value, std::size_t from) const;

 private:
  using Entry = std::pair<std::string, std::uint32_t>;  // a key and an ordinal

  std::string KeyOf(const automation::Variant& value) const {
    return ComparisonBytes(value, dialect_, column_);
  }
  const Dialect& dialect_;
  Column column_;
  std::vector<Entry> entries_;  // ascending
};

}  // namespace ADODB::engine
