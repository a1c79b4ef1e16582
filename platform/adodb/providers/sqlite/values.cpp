#include "platform/adodb/providers/sqlite/values.hpp"

#include <cstdint>
#include <limits>
#include <string>

#include "platform/adodb/engine/iso_date_time.hpp"
#include "platform/adodb/engine/sql_tokens.hpp"

namespace ADODB::sqlite {
namespace {

using automation::Variant;
using engine::ColumnType;

std::string UpperCased(std::string_view text) {
  std::string upper(text);
  for (char& c : upper) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return upper;
}

Variant Whole(std::int64_t value) {
  if (value >= std::numeric_limits<std::int32_t>::min() &&
      value <= std::numeric_limits<std::int32_t>::max()) {
    return static_cast<std::int32_t>(value);
  }
  return value;
}

std::string_view Bytes(sqlite3_stmt* statement, int place) {
  // Asked for as a blob, a text is not converted; its length is right after the pointer was fetched.
  const auto* data = static_cast<const char*>(sqlite3_column_blob(statement, place));
  const int length = sqlite3_column_bytes(statement, place);
  return data == nullptr ? std::string_view() : std::string_view(data, static_cast<std::size_t>(length));
}

Variant OfText(std::string_view text, ColumnType type) {
  if (type == ColumnType::DateTime) {
    if (const auto moment = engine::ParseIso(text)) return *moment;
  }
  if (type == ColumnType::Boolean) {
    if (engine::EqualsIgnoringAsciiCase(text, "true")) return true;
    if (engine::EqualsIgnoringAsciiCase(text, "false")) return false;
  }
  return text;
}

}  // namespace

ColumnType TypeOfDeclaration(std::string_view declaration) {
  if (declaration.empty()) return ColumnType::Text;
  const std::string name = UpperCased(declaration);
  const auto has = [&](const char* part) { return name.find(part) != std::string::npos; };
  if (has("BOOL") || name == "BIT" || name == "BIT(1)") return ColumnType::Boolean;
  if (has("DATE") || has("TIMESTAMP")) return ColumnType::DateTime;
  if (has("INT") || has("SERIAL") || has("COUNTER")) return ColumnType::Integer;
  if (has("CHAR") || has("CLOB") || has("TEXT") || has("STRING") || has("MEMO")) return ColumnType::Text;
  if (has("BLOB") || has("BINARY") || has("IMAGE")) return ColumnType::Binary;
  if (has("REAL") || has("FLOA") || has("DOUB")) return ColumnType::Double;
  return ColumnType::Decimal;
}

Variant ReadValue(sqlite3_stmt* statement, int place, const engine::Column& column) {
  switch (sqlite3_column_type(statement, place)) {
    case SQLITE_NULL:
      return Variant::Null();
    case SQLITE_INTEGER: {
      const std::int64_t number = sqlite3_column_int64(statement, place);
      if (column.type == ColumnType::Boolean) return number != 0;
      if (column.type == ColumnType::Double) return static_cast<double>(number);
      return Whole(number);
    }
    case SQLITE_FLOAT: {
      const double number = sqlite3_column_double(statement, place);
      if (column.type == ColumnType::Boolean) return number != 0;
      return number;
    }
    default:
      return OfText(Bytes(statement, place), column.type);
  }
}

}  // namespace ADODB::sqlite
