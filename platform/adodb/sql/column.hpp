// What a provider tells about a column of a result and about the table behind it.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace ADODB::engine {

enum class ColumnType { Boolean, Integer, Decimal, Double, DateTime, Text, Binary };

struct Column {
  std::string name;  // as the engine reports it
  ColumnType type = ColumnType::Text;
  // The table that the values come from, as the engine or the statement names it; empty for an expression or
  // when it is unknown.
  std::string baseTable;
  std::string baseColumn;  // the column of that table, as the database spells it; empty for an expression
  std::string
      collation;  // the engine's name of the column's collation, for Dialect::ComparisonKey; may be empty
};

// How rows of one table are addressed and made.
struct TableShape {
  enum class Address {
    Key,      // a primary key, or the engine's own number of the row
    Place,    // where the row lies: another one when it is changed, and maybe another row's after that
    WholeRow  // nothing but its values: rows that are equal are not told apart
  };

  // The columns that address a row, as the database spells them. Empty when rows cannot be addressed, those
  // of a view for instance: they are read-only.
  std::vector<std::string> keyColumns;
  Address address = Address::Key;
  // The primary key as the table declares it, which may be another than the columns above; empty when there
  // is none.
  std::vector<std::string> primaryKey;
  std::optional<std::string> generatedColumn;  // the column that the database numbers by itself
};

}  // namespace ADODB::engine
