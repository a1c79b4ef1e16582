// The memory behind one "?" of a prepared statement.
#pragma once

#include <sql.h>
#include <sqlext.h>

#include <cstdint>
#include <string>

#include "platform/adodb/odbc/result_column.hpp"
#include "platform/adodb/odbc/unicode.hpp"
#include "platform/automation/variant.hpp"

namespace ADODB::odbc {

class ParameterBuffer {
 public:
  // Takes a value and binds it to parameter `number` (from 1) of `statement`. Nothing is bound anew when the
  // memory bound before serves the value too, since drivers forget parts of a prepared statement when it is.
  // Texts are handed over in `form`.
  SQLRETURN Bind(SQLHANDLE statement, SQLUSMALLINT number, const automation::Variant& value, TextForm form);

 private:
  struct Shape {
    SQLSMALLINT cType = 0;
    SQLSMALLINT sqlType = 0;
    SQLULEN size = 0;
    SQLSMALLINT digits = 0;
    SQLPOINTER memory = nullptr;
    friend bool operator==(const Shape&, const Shape&) = default;
  };

  Shape Take(const automation::Variant& value, TextForm form);
  // Texts keep their memory for shorter ones that follow.
  template <class Text>
  Shape Keep(Text text, Text& kept, SQLSMALLINT cType, SQLSMALLINT sqlType, SQLSMALLINT longType);

  Shape bound_;
  SQLLEN indicator_ = 0;
  unsigned char bit_ = 0;
  std::int32_t integer_ = 0;
  std::int64_t wideInteger_ = 0;
  double number_ = 0;
  SQL_TIMESTAMP_STRUCT moment_{};
  WideText text_;
  std::string bytes_;
};

}  // namespace ADODB::odbc
