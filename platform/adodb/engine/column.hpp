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
  std::string
      baseTable;  // the table that the values come from; empty for an expression or when it is unknown
  std::string baseColumn;  // the column of that table, as the database spells it; empty for an expression
  std::string
      collation;  // the engine's name of the column's collation, for Dialect::ComparisonKey; may be empty
};

// How rows of one table are addressed and made.
struct TableShape {
  // Columns that tell every row apart, as the database spells them: the primary key, or the engine's own row
  // number where it has one. Empty when rows cannot be addressed: such a table is read-only.
  std::vector<std::string> keyColumns;
  std::optional<std::string> generatedColumn;  // the column that the database numbers by itself
};

}  // namespace ADODB::engine
