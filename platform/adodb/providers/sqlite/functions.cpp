#include "platform/adodb/providers/sqlite/functions.hpp"

#include <string>
#include <string_view>

#include "platform/adodb/engine/iso_date_time.hpp"
#include "platform/adodb/providers/sqlite/error.hpp"
#include "platform/automation/date_time.hpp"

namespace ADODB::sqlite {
namespace {

std::string_view TextOf(sqlite3_value* value) {
  const void* text = sqlite3_value_text(value);
  return {static_cast<const char*>(text), static_cast<std::size_t>(sqlite3_value_bytes(value))};
}

void GiveText(sqlite3_context* context, const std::string& text) {
  sqlite3_result_text(context, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
}

void Moment(sqlite3_context* context, int /*count*/, sqlite3_value** arguments) {
  if (sqlite3_value_type(arguments[0]) != SQLITE_TEXT) return;
  try {
    if (const auto moment = engine::ParseIso(TextOf(arguments[0])))
      GiveText(context, engine::IsoText(*moment));
  } catch (...) {
    sqlite3_result_error_nomem(context);
  }
}

void AddDays(sqlite3_context* context, int /*count*/, sqlite3_value** arguments) {
  if (sqlite3_value_type(arguments[0]) == SQLITE_NULL || sqlite3_value_type(arguments[1]) != SQLITE_TEXT)
    return;
  try {
    const auto moment = engine::ParseIso(TextOf(arguments[1]));
    if (!moment) return;
    GiveText(context, engine::IsoText(automation::AddDays(*moment, sqlite3_value_int64(arguments[0]))));
  } catch (const automation::Error&) {
    sqlite3_result_error(context, "Adding a value to a 'datetime' column caused an overflow.", -1);
  } catch (...) {
    sqlite3_result_error_nomem(context);
  }
}

}  // namespace

void RegisterFunctions(sqlite3* database) {
  const auto add = [database](const char* name, int count, auto* function) {
    const int code = sqlite3_create_function_v2(database, name, count, SQLITE_UTF8 | SQLITE_DETERMINISTIC,
                                                nullptr, function, nullptr, nullptr, nullptr);
    if (code != SQLITE_OK) throw ErrorOf(database, code);
  };
  add("orvane_adddays", 2, &AddDays);
  add("orvane_moment", 1, &Moment);
}

}  // namespace ADODB::sqlite
