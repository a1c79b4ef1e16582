#include "platform/adodb/engines/mariadb/traits.hpp"

#include <vector>

#include "platform/adodb/sql/tokens.hpp"
#include "platform/automation/error.hpp"

namespace ADODB::engine {
namespace {

constexpr std::string_view kDrivers[] = {"mariadb", "maodbc", "mysql"};

// Literals mean what they mean in standard SQL, and a value that does not fit is refused, not cut.
constexpr std::string_view kSettings =
    "SET SESSION sql_mode='STRICT_TRANS_TABLES,NO_BACKSLASH_ESCAPES,PIPES_AS_CONCAT,ANSI_QUOTES'";

constexpr Traits::Option kOptions[] = {
    // An update that changes nothing still counts the row that it met.
    {"OPTION", "2"},
    {"CHARSET", "utf8mb4"},
    {"INITSTMT", kSettings},
};

std::string Encoding(const ConnectionString& text) {
  return base::ToAsciiLower(text.Value("CHARSET").value_or(""));
}

void RequireExactText(const ConnectionString& text) {
  const std::string encoding = Encoding(text);
  if (encoding == "utf8mb4" || encoding == "utf8mb3" || encoding == "utf8") return;
  throw automation::Error(
      automation::ErrorNumber::ArgumentsInvalid, "MSDASQL",
      "The connection string must say CHARSET=utf8mb4. In another character set the driver replaces what it "
      "cannot write by what looks like it, a typographic apostrophe by a quote for instance.");
}

std::string SetUp(const ConnectionString& text) {
  return text.Value("INITSTMT") == kSettings
             ? ""
             : "SET SESSION sql_mode = concat(@@sql_mode, ',NO_BACKSLASH_ESCAPES')";
}

// The driver opens a converter for every single string that it is asked for as UTF-16.
bool GivesUtf8(const ConnectionString& text) {
  return Encoding(text) == "utf8mb4";
}

Traits::Query Describe(std::string_view table) {
  const std::vector<std::string> parts = Names(table);
  const automation::Variant schema =
      parts.size() > 1 ? automation::Variant(parts[parts.size() - 2]) : automation::Variant::Null();
  const automation::Variant name = parts.empty() ? std::string(table) : parts.back();
  return {
      "SELECT c.COLUMN_NAME, coalesce(s.SEQ_IN_INDEX, 0), c.EXTRA LIKE '%auto_increment%',"
      " coalesce(c.COLLATION_NAME, ''), coalesce((SELECT t.TABLE_TYPE IN ('BASE TABLE', 'SYSTEM VERSIONED')"
      " FROM information_schema.TABLES t WHERE t.TABLE_SCHEMA = coalesce(?, database()) AND t.TABLE_NAME = "
      "?), "
      "0)"
      " FROM information_schema.COLUMNS c"
      " LEFT JOIN information_schema.STATISTICS s ON s.TABLE_SCHEMA = coalesce(?, database()) AND "
      "s.TABLE_NAME "
      "= ?"
      " AND s.INDEX_NAME = 'PRIMARY' AND s.COLUMN_NAME = c.COLUMN_NAME"
      " WHERE c.TABLE_SCHEMA = coalesce(?, database()) AND c.TABLE_NAME = ? ORDER BY c.ORDINAL_POSITION",
      {schema, name, schema, name, schema, name}};
}

}  // namespace

const Traits& MariaDbTraits() {
  static const Traits traits{.drivers = kDrivers,
                             .options = kOptions,
                             .requireExactText = &RequireExactText,
                             .setUp = &SetUp,
                             .givesUtf8 = &GivesUtf8,
                             // The driver tells the server at once when autocommit changes: a message at the
                             // beginning and one at the end.
                             .begin = "START TRANSACTION",
                             .describe = &Describe,
                             .looksUpCollations = true};
  return traits;
}

}  // namespace ADODB::engine
