#include "host/restore/row_insertion.hpp"

#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>

#include "platform/adodb/sql/dialect.hpp"
#include "platform/adodb/sql/iso_date_time.hpp"
#include "platform/base/text.hpp"

namespace orvane::host {
namespace {

using ADODB::engine::Column;
using ADODB::engine::ColumnType;
using ADODB::engine::Parameters;
using automation::Variant;
using Json = nlohmann::ordered_json;

std::string Decoded(const std::string& base64) {
  constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string bytes;
  unsigned int bits = 0;
  int count = 0;
  for (const char c : base64) {
    const std::size_t digit = kDigits.find(c);
    if (digit == std::string_view::npos) break;  // "=" at the end
    bits = bits << 6 | static_cast<unsigned int>(digit);
    count += 6;
    if (count < 8) continue;
    count -= 8;
    bytes += static_cast<char>(bits >> count & 0xFF);
  }
  return bytes;
}

Variant Whole(std::int64_t number) {
  if (number < std::numeric_limits<std::int32_t>::min() ||
      number > std::numeric_limits<std::int32_t>::max()) {
    return number;
  }
  return static_cast<std::int32_t>(number);
}

// What a journal tells as a text: a text, a date, or a number with decimals.
Variant TextIn(const std::string& text, ColumnType type) {
  if (type == ColumnType::DateTime) {
    if (const auto moment = ADODB::engine::ParseIso(text)) return *moment;
  }
  if (type == ColumnType::Decimal || type == ColumnType::Integer || type == ColumnType::Double) {
    const Json number = Json::parse(text, nullptr, false);
    if (number.is_number_integer()) return Whole(number.get<std::int64_t>());
    if (number.is_number()) return number.get<double>();
  }
  return text;
}

// The value for a column of that type. One that was stored in another form than the column declares goes back
// in its own.
Variant ValueFrom(const Json& value, ColumnType type) {
  switch (value.type()) {
    case Json::value_t::boolean:
      if (type == ColumnType::Boolean) return value.get<bool>();
      return static_cast<std::int32_t>(value.get<bool>() ? 1 : 0);
    case Json::value_t::number_integer:
    case Json::value_t::number_unsigned:
      if (type == ColumnType::Boolean) return value.get<std::int64_t>() != 0;
      return Whole(value.get<std::int64_t>());
    case Json::value_t::number_float:
      return value.get<double>();
    case Json::value_t::string:
      return TextIn(value.get<std::string>(), type);
    case Json::value_t::object:
      return Decoded(value.value("base64", ""));
    default:
      return Variant::Null();
  }
}

}  // namespace

struct RowInsertion::Table {
  std::vector<Column> columns;
  std::vector<std::string> shown;  // their names as journals have them
  bool hasKey = false;

  std::size_t IndexOf(const std::string& column, const std::string& table) const {
    for (std::size_t i = 0; i < shown.size(); ++i) {
      if (base::EqualsIgnoringAsciiCase(shown[i], column)) return i;
    }
    throw CannotInsert("the table " + table + " has no column " + column);
  }
};

struct RowInsertion::Prepared {
  std::unique_ptr<ADODB::engine::PreparedStatement> statement;
};

RowInsertion::RowInsertion(ADODB::engine::Session& session) : session_(session) {}
RowInsertion::~RowInsertion() = default;

RowInsertion::Table& RowInsertion::TableNamed(const std::string& name) {
  const auto [at, isNew] = tables_.try_emplace(name);
  Table& table = at->second;
  if (!isNew) return table;
  table.hasKey = !session_.Describe(name).primaryKey.empty();
  table.columns = session_.Query("SELECT * FROM " + name + " WHERE 1 = 0", {})->Columns();
  for (const Column& column : table.columns)
    table.shown.push_back(session_.GetDialect().ShownName(column.name));
  return table;
}

RowInsertion::Prepared& RowInsertion::PreparedFor(const std::string& sql) {
  return prepared_[sql];
}

bool RowInsertion::IsThere(const ArchivedRow& row) {
  const Table& table = TableNamed(row.table);
  const ADODB::engine::Dialect& dialect = session_.GetDialect();
  const Json key = table.hasKey ? Json::parse(row.key) : Json{{"Q_ID", row.request}};
  std::string where;
  Parameters parameters;
  for (const auto& [name, value] : key.items()) {
    const Column& column = table.columns[table.IndexOf(name, row.table)];
    parameters.push_back(ValueFrom(value, column.type));
    const bool isNumber = std::holds_alternative<std::int32_t>(parameters.back().Get());
    where += (where.empty() ? "" : " AND ") + dialect.QuotedName(column.name) + " = ";
    where += isNumber ? dialect.NumberParameter() : "?";
  }
  const std::string sql = "SELECT COUNT(*) FROM " + row.table + " WHERE " + where;
  const auto rows = session_.Query(ADODB::engine::Sql(sql, PreparedFor(sql).statement), parameters);
  return rows->Next() && automation::ToInt64(rows->Value(0)) > 0;
}

void RowInsertion::Insert(const ArchivedRow& row) {
  const Table& table = TableNamed(row.table);
  const ADODB::engine::Dialect& dialect = session_.GetDialect();
  std::string names;
  std::string places;
  Parameters parameters;
  const Json values = Json::parse(row.json);
  for (const auto& [name, value] : values.items()) {
    const Column& column = table.columns[table.IndexOf(name, row.table)];
    names += (names.empty() ? "" : ",") + dialect.QuotedName(column.name);
    places += places.empty() ? "?" : ",?";
    parameters.push_back(ValueFrom(value, column.type));
  }
  const std::string sql = "INSERT INTO " + row.table + " (" + names + ") VALUES (" + places + ")";
  session_.Execute(ADODB::engine::Sql(sql, PreparedFor(sql).statement), parameters);
}

std::string KeyText(const ArchivedRow& row) {
  std::string text;
  const Json key = Json::parse(row.key);
  for (const auto& [name, value] : key.items()) {
    text += (text.empty() ? "" : ", ") + name + ' ' +
            (value.is_string() ? value.get<std::string>() : value.dump());
  }
  return text;
}

}  // namespace orvane::host
