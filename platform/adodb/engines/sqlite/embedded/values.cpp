#include "platform/adodb/engines/sqlite/embedded/values.hpp"

#include <cstdint>
#include <string>

#include "platform/adodb/sql/iso_date_time.hpp"
#include "platform/adodb/sql/parameters.hpp"
#include "platform/adodb/sql/tokens.hpp"

namespace ADODB::sqlite {
namespace {

using automation::Variant;
using engine::ColumnType;

std::string_view Bytes(sqlite3_value* value) {
  // Asked for as a blob, a text is not converted; its length is right after the pointer was fetched.
  const auto* data = static_cast<const char*>(sqlite3_value_blob(value));
  const int length = sqlite3_value_bytes(value);
  return data == nullptr ? std::string_view() : std::string_view(data, static_cast<std::size_t>(length));
}

void OfText(std::string_view text, ColumnType type, Variant& into) {
  if (type == ColumnType::DateTime) {
    if (const auto moment = engine::ParseIso(text)) {
      into = *moment;
      return;
    }
  }
  if (type == ColumnType::Boolean) {
    const bool isTrue = engine::EqualsIgnoringAsciiCase(text, "true");
    if (isTrue || engine::EqualsIgnoringAsciiCase(text, "false")) {
      into = isTrue;
      return;
    }
  }
  into.SetText(text);
}

}  // namespace

ColumnType TypeOfDeclaration(std::string_view declaration) {
  if (declaration.empty()) return ColumnType::Text;
  const std::string name = base::ToAsciiUpper(declaration);
  const auto has = [&](const char* part) { return name.find(part) != std::string::npos; };
  if (has("BOOL") || name == "BIT" || name == "BIT(1)") return ColumnType::Boolean;
  if (has("DATE") || has("TIMESTAMP")) return ColumnType::DateTime;
  if (has("INT") || has("SERIAL") || has("COUNTER")) return ColumnType::Integer;
  if (has("CHAR") || has("CLOB") || has("TEXT") || has("STRING") || has("MEMO")) return ColumnType::Text;
  if (has("BLOB") || has("BINARY") || has("IMAGE")) return ColumnType::Binary;
  if (has("REAL") || has("FLOA") || has("DOUB")) return ColumnType::Double;
  return ColumnType::Decimal;
}

void ReadValue(sqlite3_stmt* statement, int place, ColumnType type, Variant& into) {
  // One thread uses the database at a time, so its values need no protection.
  sqlite3_value* const value = sqlite3_column_value(statement, place);
  const int stored = sqlite3_value_type(value);
  // A number is a date to whoever converts it: 0 the 30th of December 1899, older than anything. As a text it
  // is none.
  if (type == ColumnType::DateTime && (stored == SQLITE_INTEGER || stored == SQLITE_FLOAT)) {
    const void* text = sqlite3_value_text(value);
    into.SetText({static_cast<const char*>(text), static_cast<std::size_t>(sqlite3_value_bytes(value))});
    return;
  }
  switch (stored) {
    case SQLITE_NULL:
      into = Variant::Null();
      break;
    case SQLITE_INTEGER: {
      const std::int64_t number = sqlite3_value_int64(value);
      if (type == ColumnType::Boolean) {
        into = number != 0;
      } else if (type == ColumnType::Double) {
        into = static_cast<double>(number);
      } else {
        into = engine::OfWhole(number);
      }
      break;
    }
    case SQLITE_FLOAT: {
      const double number = sqlite3_value_double(value);
      if (type == ColumnType::Boolean) {
        into = number != 0;
      } else {
        into = number;
      }
      break;
    }
    default:
      OfText(Bytes(value), type, into);
  }
}

}  // namespace ADODB::sqlite
