#include "platform/adodb/odbc/result_column.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>

#include "platform/adodb/odbc/error.hpp"
#include "platform/adodb/sql/parameters.hpp"
#include "platform/automation/date_time.hpp"

namespace ADODB::odbc {
namespace {

using automation::Variant;
using engine::ColumnType;

// Reads a value of fixed size; false when it is Null or could not be read.
template <class T>
bool ReadFixed(SQLHANDLE statement, SQLUSMALLINT number, SQLSMALLINT cType, T& value, SQLRETURN& status) {
  SQLLEN indicator = 0;
  status = SQLGetData(statement, number, cType, &value, sizeof value, &indicator);
  return Succeeded(status) && indicator != SQL_NULL_DATA;
}

// Texts and bytes come in pieces: the size that a driver declares for a column is no bound, nor is it always
// known. The value is left at the front of `buffer`, `filled` characters of it; false when it is Null or
// could not be read.
template <class Buffer>
bool ReadPieces(SQLHANDLE statement, SQLUSMALLINT number, SQLSMALLINT cType, Buffer& buffer,
                std::size_t& filled, SQLRETURN& status) {
  constexpr std::size_t kUnit = sizeof(typename Buffer::value_type);
  constexpr std::size_t kFirstPiece = 2048;
  constexpr std::size_t kLargestUnaskedPiece = 1 << 20;
  const std::size_t closing = cType == SQL_C_BINARY ? 0 : 1;  // the zero behind a text
  if (buffer.size() < kFirstPiece) buffer.resize(kFirstPiece);
  filled = 0;
  for (;;) {
    const std::size_t room = buffer.size() - filled;
    SQLLEN indicator = 0;
    status = SQLGetData(statement, number, cType, buffer.data() + filled, static_cast<SQLLEN>(room * kUnit),
                        &indicator);
    if (status == SQL_NO_DATA && filled > 0) {
      status = SQL_SUCCESS;
      return true;
    }
    if (!Succeeded(status) || indicator == SQL_NULL_DATA) return false;
    const bool known = indicator != SQL_NO_TOTAL;
    const std::size_t rest = known ? static_cast<std::size_t>(indicator) / kUnit : 0;
    if (known && rest + closing <= room) {
      filled += rest;
      return true;
    }
    filled += room - closing;
    const std::size_t more = known ? rest + closing - room : std::min(buffer.size(), kLargestUnaskedPiece);
    buffer.resize(filled + more + closing);
  }
}

template <class Buffer>
void GiveBackMemory(Buffer& buffer) {
  constexpr std::size_t kLargestKept = 1 << 16;
  if (buffer.size() <= kLargestKept) return;
  buffer.resize(kLargestKept);
  buffer.shrink_to_fit();
}

SQLRETURN ReadBytes(SQLHANDLE statement, SQLUSMALLINT number, SQLSMALLINT cType, TextBuffer& buffer,
                    Variant& value) {
  SQLRETURN status = SQL_SUCCESS;
  std::size_t filled = 0;
  if (ReadPieces(statement, number, cType, buffer.bytes, filled, status)) {
    value = std::string(buffer.bytes, 0, filled);
    GiveBackMemory(buffer.bytes);
  }
  return status;
}

SQLRETURN ReadText(SQLHANDLE statement, SQLUSMALLINT number, TextForm form, TextBuffer& buffer,
                   Variant& value) {
  if (form == TextForm::Utf8) return ReadBytes(statement, number, SQL_C_CHAR, buffer, value);
  SQLRETURN status = SQL_SUCCESS;
  std::size_t filled = 0;
  if (ReadPieces(statement, number, SQL_C_WCHAR, buffer.wide, filled, status)) {
    value = ToUtf8(buffer.wide.data(), filled);
    GiveBackMemory(buffer.wide);
  }
  return status;
}

}  // namespace

Variant OfDecimal(double number) {
  constexpr double kWholeUpTo = 9007199254740992.0;  // 2 to the 53rd
  const bool whole = std::nearbyint(number) == number && std::fabs(number) <= kWholeUpTo;
  return whole ? engine::OfWhole(static_cast<std::int64_t>(number)) : Variant(number);
}

Variant OfTimestamp(const SQL_TIMESTAMP_STRUCT& moment) {
  // MariaDB's zero dates (0000-00-00, and 2004-00-00 where it is let in) stand for "none".
  if (moment.year == 0 || moment.month == 0 || moment.day == 0) return Variant::Null();
  return automation::DateTime::FromParts({.year = moment.year,
                                          .month = moment.month,
                                          .day = moment.day,
                                          .hour = moment.hour,
                                          .minute = moment.minute,
                                          .second = moment.second,
                                          .microsecond = static_cast<int>(moment.fraction / 1000)});
}

ColumnType TypeOf(SQLSMALLINT sqlType) {
  switch (sqlType) {
    case SQL_BIT:
      return ColumnType::Boolean;
    case SQL_TINYINT:
    case SQL_SMALLINT:
    case SQL_INTEGER:
    case SQL_BIGINT:
      return ColumnType::Integer;
    case SQL_DECIMAL:
    case SQL_NUMERIC:
      return ColumnType::Decimal;
    case SQL_REAL:
    case SQL_FLOAT:
    case SQL_DOUBLE:
      return ColumnType::Double;
    case SQL_TYPE_DATE:
    case SQL_TYPE_TIMESTAMP:
    case SQL_DATE:
    case SQL_TIMESTAMP:
      return ColumnType::DateTime;
    case SQL_BINARY:
    case SQL_VARBINARY:
    case SQL_LONGVARBINARY:
      return ColumnType::Binary;
    default:
      return ColumnType::Text;  // times of day, intervals, ids and whatever else has a text
  }
}

SQLRETURN ReadValue(SQLHANDLE statement, SQLUSMALLINT number, ColumnType type, TextForm form,
                    TextBuffer& buffer, Variant& value) {
  SQLRETURN status = SQL_SUCCESS;
  value = Variant::Null();
  switch (type) {
    case ColumnType::Boolean: {
      unsigned char bit = 0;
      if (ReadFixed(statement, number, SQL_C_BIT, bit, status)) value = bit != 0;
      return status;
    }
    case ColumnType::Integer: {
      SQLBIGINT whole = 0;
      if (ReadFixed(statement, number, SQL_C_SBIGINT, whole, status)) value = engine::OfWhole(whole);
      return status;
    }
    case ColumnType::Decimal: {
      double exact = 0;
      if (ReadFixed(statement, number, SQL_C_DOUBLE, exact, status)) value = OfDecimal(exact);
      return status;
    }
    case ColumnType::Double: {
      double inexact = 0;
      if (ReadFixed(statement, number, SQL_C_DOUBLE, inexact, status)) value = inexact;
      return status;
    }
    case ColumnType::DateTime: {
      SQL_TIMESTAMP_STRUCT moment{};
      if (ReadFixed(statement, number, SQL_C_TYPE_TIMESTAMP, moment, status)) value = OfTimestamp(moment);
      return status;
    }
    case ColumnType::Binary:
      return ReadBytes(statement, number, SQL_C_BINARY, buffer, value);
    case ColumnType::Text:
      return ReadText(statement, number, form, buffer, value);
  }
  return status;
}

}  // namespace ADODB::odbc
