// Conditions of the kind "this column still reads as it did".
#pragma once

#include <string>

#include "platform/adodb/session/provider.hpp"
#include "platform/adodb/sql/dialect.hpp"

namespace ADODB::engine {

// True exactly when reading the column would give the value again that is bound to it: strings byte for
// byte, Null for Null.
struct StillReads {
  StillReads(const Dialect& dialect, const Column& column);
  // The parameters of the condition for a value that was read.
  void Bind(const Dialect& dialect, const automation::Variant& value, Parameters& parameters) const;

  std::string condition;  // depends on the column alone
  ColumnType type;
  std::size_t marks;  // "?" in the condition
};

}  // namespace ADODB::engine
