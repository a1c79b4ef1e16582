#include "platform/adodb/odbc/bound_column.hpp"

#include "platform/adodb/odbc/unicode.hpp"
#include "platform/adodb/sql/parameters.hpp"

namespace ADODB::odbc {
namespace {

using engine::ColumnType;

// Room for the 255 characters of the widest ordinary text column, at four bytes each, and for the closing
// zero; and for a paragraph or two of a long one.
constexpr std::size_t kTextUnits = 512;
constexpr std::size_t kTextBytes = kTextUnits * sizeof(SQLWCHAR);

std::size_t ClosingZero(TextForm form) {
  return form == TextForm::Utf8 ? 1 : sizeof(SQLWCHAR);
}

}  // namespace

bool BoundColumn::Suits(SQLSMALLINT sqlType) {
  switch (sqlType) {
    case SQL_BIT:  // MariaDB's driver does not say whether a bound one is Null
    case SQL_BINARY:
    case SQL_VARBINARY:
    case SQL_LONGVARBINARY:
      return false;
    default:
      return true;
  }
}

SQLRETURN BoundColumn::Bind(SQLHANDLE statement, SQLUSMALLINT number, ColumnType type, TextForm form) {
  type_ = type;
  form_ = form;
  const auto bind = [&](SQLSMALLINT cType, SQLPOINTER memory, std::size_t size) {
    return SQLBindCol(statement, number, cType, memory, static_cast<SQLLEN>(size), &indicator_);
  };
  switch (type) {
    case ColumnType::Integer:
      return bind(SQL_C_SBIGINT, &fixed_.whole, sizeof fixed_.whole);
    case ColumnType::Decimal:
    case ColumnType::Double:
      return bind(SQL_C_DOUBLE, &fixed_.number, sizeof fixed_.number);
    case ColumnType::DateTime:
      return bind(SQL_C_TYPE_TIMESTAMP, &fixed_.moment, sizeof fixed_.moment);
    case ColumnType::Boolean:
    case ColumnType::Text:
    case ColumnType::Binary:
      break;
  }
  text_ = std::make_unique_for_overwrite<SQLWCHAR[]>(kTextUnits);
  return bind(form == TextForm::Utf8 ? SQL_C_CHAR : SQL_C_WCHAR, text_.get(), kTextBytes);
}

SQLRETURN BoundColumn::Unbind(SQLHANDLE statement, SQLUSMALLINT number) {
  text_.reset();
  return SQLBindCol(statement, number, SQL_C_DEFAULT, nullptr, 0, nullptr);
}

bool BoundColumn::HoldsText() const {
  return indicator_ >= 0 && static_cast<std::size_t>(indicator_) + ClosingZero(form_) <= kTextBytes;
}

void BoundColumn::Read(automation::Variant& into, TextBuffer& buffer) const {
  if (indicator_ == SQL_NULL_DATA) {
    into = automation::Variant::Null();
    return;
  }
  switch (type_) {
    case ColumnType::Integer:
      into = engine::OfWhole(fixed_.whole);
      return;
    case ColumnType::Decimal:
      into = OfDecimal(fixed_.number);
      return;
    case ColumnType::Double:
      into = fixed_.number;
      return;
    case ColumnType::DateTime:
      into = OfTimestamp(fixed_.moment);
      return;
    case ColumnType::Boolean:
    case ColumnType::Text:
    case ColumnType::Binary:
      break;
  }
  const auto bytes = static_cast<std::size_t>(indicator_);
  if (form_ == TextForm::Utf8) {
    into.SetText({reinterpret_cast<const char*>(text_.get()), bytes});
  } else {
    ToUtf8(text_.get(), bytes / sizeof(SQLWCHAR), buffer.bytes);
    into.SetText(buffer.bytes);
  }
}

}  // namespace ADODB::odbc
