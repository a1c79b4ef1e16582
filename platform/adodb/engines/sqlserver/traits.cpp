#include "platform/adodb/engines/sqlserver/traits.hpp"

#include "platform/automation/runtime.hpp"

namespace ADODB::engine {
namespace {

constexpr std::string_view kDrivers[] = {"tds", "sql server"};

constexpr Traits::Option kOptions[] = {{"TDS_Version", "7.4"}, {"ClientCharset", "UTF-8"}};

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

// The engine reads the jobs' local date-time literals itself.
std::string SetUp(const ConnectionString&) {
  return "SET DATEFORMAT " + DateOrder();
}

Traits::Query Describe(std::string_view table) {
  return {
      "SELECT c.name, coalesce(k.key_ordinal, 0), CAST(c.is_identity AS int), coalesce(c.collation_name, "
      "''), 1"
      " FROM sys.columns c"
      " LEFT JOIN sys.indexes i ON i.object_id = c.object_id AND i.is_primary_key = 1"
      " LEFT JOIN sys.index_columns k ON k.object_id = i.object_id AND k.index_id = i.index_id"
      " AND k.column_id = c.column_id"
      " WHERE c.object_id = object_id(?, 'U') ORDER BY c.column_id",
      {automation::Variant(table)}};
}

}  // namespace

const Traits& SqlServerTraits() {
  static const Traits traits{
      .drivers = kDrivers, .options = kOptions, .setUp = &SetUp, .describe = &Describe};
  return traits;
}

}  // namespace ADODB::engine
