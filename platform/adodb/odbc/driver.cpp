#include "platform/adodb/odbc/driver.hpp"

#include <utility>

#include "platform/adodb/engines/mariadb/dialect.hpp"
#include "platform/adodb/engines/postgresql/dialect.hpp"
#include "platform/adodb/engines/sqlserver/dialect.hpp"
#include "platform/adodb/sql/tokens.hpp"
#include "platform/automation/runtime.hpp"

namespace ADODB::odbc {
namespace {

std::string Lower(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return lower;
}

bool Contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

// Texts mean what they mean in standard SQL, and a value that does not fit is refused, not cut.
constexpr std::string_view kMariaDbSetUp =
    "SET SESSION sql_mode='STRICT_TRANS_TABLES,NO_BACKSLASH_ESCAPES,PIPES_AS_CONCAT,ANSI_QUOTES'";

// The just-in-time compiler takes minutes for conditions of thousands of terms. A backslash in a text is one,
// whatever the database's own setting is. Named here, the encoding is also that of texts that the driver is
// asked for as bytes, whatever the locale is.
constexpr std::string_view kPostgreSqlSetUp =
    "SET+jit%3Doff%3BSET+datestyle%3D'ISO,MDY'%3BSET+standard_conforming_strings%3Don%3B"
    "SET+client_encoding+to+'UTF8'";

using Options = std::vector<std::pair<std::string_view, std::string_view>>;

Options DefaultOptions(Engine engine) {
  switch (engine) {
    case Engine::PostgreSql:
      return {
          // A boolean column is a Boolean, not the text "1".
          {"BoolsAsChar", "0"},
          // Fetching through a cursor cuts a result short, without a word, when another statement fails.
          {"UseDeclareFetch", "0"},
          // A failed statement leaves the transaction as it was before it.
          {"Protocol", "7.4-2"},
          {"LFConversion", "0"},
          {"ConnSettings", kPostgreSqlSetUp},
      };
    case Engine::MariaDb:
      return {
          // An update that changes nothing still counts the row that it met.
          {"OPTION", "2"},
          {"CHARSET", "utf8mb4"},
          {"INITSTMT", kMariaDbSetUp},
      };
    case Engine::SqlServer:
      return {{"TDS_Version", "7.4"}, {"ClientCharset", "UTF-8"}};
    case Engine::Other:
      return {};
  }
  return {};
}

void Rename(engine::ConnectionString& text, std::string_view from, std::string_view to) {
  const auto value = text.Value(from);
  text.Remove(from);
  if (value && !text.Value(to)) text.Set(to, *value);
}

// The order of day, month and year in the current locale's dates, as SET DATEFORMAT names it.
std::string DateOrder() {
  const std::string sample =
      automation::CurrentLocale().ShortDate(automation::DateTime::FromDate(2033, 11, 22));
  const std::size_t year = sample.find("33");
  const std::size_t month = sample.find("11");
  const std::size_t day = sample.find("22");
  if (year < month && year < day) return "ymd";
  return day < month ? "dmy" : "mdy";
}

// "[schema].[table]" in its parts, as written or as the quotes keep them.
std::vector<std::string> NameParts(std::string_view name) {
  std::vector<std::string> parts;
  for (const engine::Token& token : engine::Tokenize(name).tokens) {
    const std::string_view text = token.In(name);
    if (token.kind == engine::TokenKind::QuotedName && text.size() >= 2) {
      std::string plain;
      const char closing = text.back();
      for (std::size_t i = 1; i + 1 < text.size(); ++i) {
        plain += text[i];
        if (text[i] == closing) ++i;
      }
      parts.push_back(std::move(plain));
    } else if (token.kind == engine::TokenKind::Word) {
      parts.emplace_back(text);
    }
  }
  return parts;
}

constexpr const char* kPostgreSqlTable =
    "SELECT a.attname::text,"
    " coalesce((SELECT k.place::int FROM unnest(i.indkey) WITH ORDINALITY AS k(number, place)"
    " WHERE k.number = a.attnum), 0),"
    " CASE WHEN a.attidentity <> '' OR pg_get_expr(d.adbin, d.adrelid) LIKE 'nextval(%' THEN 1 ELSE 0 END,"
    " ''::text, CASE WHEN c.relkind = 'r' AND NOT c.relhassubclass THEN 1 ELSE 0 END"
    " FROM pg_catalog.pg_attribute a"
    " JOIN pg_catalog.pg_class c ON c.oid = a.attrelid AND c.relkind IN ('r', 'p')"
    " LEFT JOIN pg_catalog.pg_index i ON i.indrelid = a.attrelid AND i.indisprimary"
    " LEFT JOIN pg_catalog.pg_attrdef d ON d.adrelid = a.attrelid AND d.adnum = a.attnum"
    " WHERE a.attrelid = to_regclass(?) AND a.attnum > 0 AND NOT a.attisdropped ORDER BY a.attnum";

constexpr const char* kMariaDbTable =
    "SELECT c.COLUMN_NAME, coalesce(s.SEQ_IN_INDEX, 0), c.EXTRA LIKE '%auto_increment%',"
    " coalesce(c.COLLATION_NAME, ''), coalesce((SELECT t.TABLE_TYPE IN ('BASE TABLE', 'SYSTEM VERSIONED')"
    " FROM information_schema.TABLES t WHERE t.TABLE_SCHEMA = coalesce(?, database()) AND t.TABLE_NAME = ?), "
    "0)"
    " FROM information_schema.COLUMNS c"
    " LEFT JOIN information_schema.STATISTICS s ON s.TABLE_SCHEMA = coalesce(?, database()) AND s.TABLE_NAME "
    "= ?"
    " AND s.INDEX_NAME = 'PRIMARY' AND s.COLUMN_NAME = c.COLUMN_NAME"
    " WHERE c.TABLE_SCHEMA = coalesce(?, database()) AND c.TABLE_NAME = ? ORDER BY c.ORDINAL_POSITION";

constexpr const char* kSqlServerTable =
    "SELECT c.name, coalesce(k.key_ordinal, 0), CAST(c.is_identity AS int), coalesce(c.collation_name, ''), 1"
    " FROM sys.columns c"
    " LEFT JOIN sys.indexes i ON i.object_id = c.object_id AND i.is_primary_key = 1"
    " LEFT JOIN sys.index_columns k ON k.object_id = i.object_id AND k.index_id = i.index_id"
    " AND k.column_id = c.column_id"
    " WHERE c.object_id = object_id(?, 'U') ORDER BY c.column_id";

}  // namespace

Engine EngineOfDriver(std::string_view driver) {
  const std::string name = Lower(driver);
  if (Contains(name, "postgres") || Contains(name, "psqlodbc")) return Engine::PostgreSql;
  if (Contains(name, "mariadb") || Contains(name, "maodbc") || Contains(name, "mysql"))
    return Engine::MariaDb;
  if (Contains(name, "freetds") || Contains(name, "tdsodbc") || Contains(name, "sql server")) {
    return Engine::SqlServer;
  }
  return Engine::Other;
}

Engine EngineOfDbms(std::string_view dbmsName) {
  return EngineOfDriver(dbmsName);
}

engine::ConnectionString ForDriver(const engine::ConnectionString& given, Engine engine) {
  engine::ConnectionString text = given;
  text.Remove("Provider");
  Rename(text, "User ID", "UID");
  Rename(text, "Password", "PWD");
  for (const auto& [keyword, value] : DefaultOptions(engine)) {
    if (!text.Value(keyword)) text.Set(keyword, std::string(value));
  }
  return text;
}

TextForm TextFormOf(Engine engine, const engine::ConnectionString& text) {
  // MariaDB's driver opens a converter for every single text that it is asked for as UTF-16, and PostgreSQL's
  // converts it twice, once for its length. Both pass texts on as they came when asked for bytes, which are
  // UTF-8 with these settings.
  bool utf8 = false;
  if (engine == Engine::MariaDb) utf8 = Lower(text.Value("CHARSET").value_or("")) == "utf8mb4";
  if (engine == Engine::PostgreSql) {
    utf8 = Contains(Lower(text.Value("ConnSettings").value_or("")), "client_encoding+to+'utf8'");
  }
  return utf8 ? TextForm::Utf8 : TextForm::Utf16;
}

void RequireTextsAsTheyAre(Engine engine, const engine::ConnectionString& text) {
  if (engine != Engine::MariaDb) return;
  const std::string encoding = Lower(text.Value("CHARSET").value_or(""));
  if (encoding == "utf8mb4" || encoding == "utf8mb3" || encoding == "utf8") return;
  throw automation::Error(
      static_cast<std::int32_t>(automation::ErrorNumber::ArgumentsInvalid), "MSDASQL",
      "The connection string must say CHARSET=utf8mb4. In another character set the driver replaces what it "
      "cannot write by what looks like it, a typographic apostrophe by a quote for instance.");
}

std::string SessionSetUp(Engine engine, const engine::ConnectionString& text) {
  switch (engine) {
    case Engine::PostgreSql:
      return text.Value("ConnSettings") == kPostgreSqlSetUp ? "" : "SET standard_conforming_strings = on";
    case Engine::MariaDb:
      return text.Value("INITSTMT") == kMariaDbSetUp
                 ? ""
                 : "SET SESSION sql_mode = concat(@@sql_mode, ',NO_BACKSLASH_ESCAPES')";
    case Engine::SqlServer:
      // It reads the jobs' local date-time texts itself, so it is told the order of their parts.
      return "SET DATEFORMAT " + DateOrder();
    case Engine::Other:
      return {};
  }
  return {};
}

const engine::Dialect* DialectOf(Engine engine) {
  switch (engine) {
    case Engine::PostgreSql:
      return &engine::PostgreSqlDialect();
    case Engine::MariaDb:
      return &engine::MariaDbDialect();
    case Engine::SqlServer:
      return &engine::SqlServerDialect();
    case Engine::Other:
      return nullptr;
  }
  return nullptr;
}

MetadataQuery TableQuery(Engine engine, std::string_view table) {
  if (engine == Engine::PostgreSql) return {kPostgreSqlTable, {automation::Variant(table)}};
  if (engine == Engine::SqlServer) return {kSqlServerTable, {automation::Variant(table)}};
  const std::vector<std::string> parts = NameParts(table);
  const automation::Variant schema =
      parts.size() > 1 ? automation::Variant(parts[parts.size() - 2]) : automation::Variant::Null();
  const automation::Variant name = parts.empty() ? std::string(table) : parts.back();
  return {kMariaDbTable, {schema, name, schema, name, schema, name}};
}

engine::TableShape KeylessShape(Engine engine, std::vector<std::string> columns) {
  if (engine == Engine::PostgreSql) {
    return {.keyColumns = {"ctid"},
            .address = engine::TableShape::Address::Place,
            .primaryKey = {},
            .generatedColumn = {}};
  }
  return {.keyColumns = std::move(columns),
          .address = engine::TableShape::Address::WholeRow,
          .primaryKey = {},
          .generatedColumn = {}};
}

}  // namespace ADODB::odbc
