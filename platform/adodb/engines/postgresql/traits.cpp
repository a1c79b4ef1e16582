#include "platform/adodb/engines/postgresql/traits.hpp"

#include "platform/adodb/sql/tokens.hpp"

namespace ADODB::engine {
namespace {

constexpr std::string_view kDrivers[] = {"postgres", "psqlodbc"};

// The just-in-time compiler takes minutes for conditions of thousands of terms. A backslash in a literal is
// one, whatever the database's own setting is. Named here, the encoding is also that of strings that the
// driver is asked for as bytes, whatever the locale is.
constexpr std::string_view kSettings =
    "SET+jit%3Doff%3BSET+datestyle%3D'ISO,MDY'%3BSET+standard_conforming_strings%3Don%3B"
    "SET+client_encoding+to+'UTF8'";

constexpr Traits::Option kOptions[] = {
    // A boolean column is a Boolean, not the text "1".
    {"BoolsAsChar", "0"},
    // Fetching through a cursor cuts a result short, without a word, when another statement fails.
    {"UseDeclareFetch", "0"},
    // A failed statement leaves the transaction as it was before it.
    {"Protocol", "7.4-2"},
    {"LFConversion", "0"},
    {"ConnSettings", kSettings},
};

std::string SetUp(const ConnectionString& text) {
  return text.Value("ConnSettings") == kSettings ? "" : "SET standard_conforming_strings = on";
}

// The driver converts a string twice when asked for UTF-16, once for its length.
bool GivesUtf8(const ConnectionString& text) {
  const std::string settings = base::ToAsciiLower(text.Value("ConnSettings").value_or(""));
  return settings.find("client_encoding+to+'utf8'") != std::string::npos;
}

Traits::Query Describe(std::string_view table) {
  return {
      "SELECT a.attname::text,"
      " coalesce((SELECT k.place::int FROM unnest(i.indkey) WITH ORDINALITY AS k(number, place)"
      " WHERE k.number = a.attnum), 0),"
      " CASE WHEN a.attidentity <> '' OR pg_get_expr(d.adbin, d.adrelid) LIKE 'nextval(%' THEN 1 ELSE 0 END,"
      " ''::text, CASE WHEN c.relkind = 'r' AND NOT c.relhassubclass THEN 1 ELSE 0 END"
      " FROM pg_catalog.pg_attribute a"
      " JOIN pg_catalog.pg_class c ON c.oid = a.attrelid AND c.relkind IN ('r', 'p')"
      " LEFT JOIN pg_catalog.pg_index i ON i.indrelid = a.attrelid AND i.indisprimary"
      " LEFT JOIN pg_catalog.pg_attrdef d ON d.adrelid = a.attrelid AND d.adnum = a.attnum"
      " WHERE a.attrelid = to_regclass(?) AND a.attnum > 0 AND NOT a.attisdropped ORDER BY a.attnum",
      {automation::Variant(table)}};
}

}  // namespace

const Traits& PostgreSqlTraits() {
  static const Traits traits{.drivers = kDrivers,
                             .options = kOptions,
                             .setUp = &SetUp,
                             .givesUtf8 = &GivesUtf8,
                             .describe = &Describe,
                             .place = "ctid"};
  return traits;
}

}  // namespace ADODB::engine
