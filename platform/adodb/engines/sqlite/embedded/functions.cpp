#include "platform/adodb/engines/sqlite/embedded/functions.hpp"

#include <optional>
#include <string>
#include <string_view>

#include "platform/adodb/engines/sqlite/embedded/error.hpp"
#include "platform/adodb/sql/iso_date_time.hpp"
#include "platform/adodb/sql/tokens.hpp"
#include "platform/automation/iso_text.hpp"

namespace ADODB::sqlite {
namespace {

std::string_view TextOf(sqlite3_value* value) {
  const void* text = sqlite3_value_text(value);
  return {static_cast<const char*>(text), static_cast<std::size_t>(sqlite3_value_bytes(value))};
}

void GiveText(sqlite3_context* context, std::string_view text) {
  sqlite3_result_text64(context, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
}

void Moment(sqlite3_context* context, int /*count*/, sqlite3_value** arguments) {
  if (sqlite3_value_type(arguments[0]) != SQLITE_TEXT) return;
  try {
    if (const auto moment = engine::ParseIso(TextOf(arguments[0])))
      GiveText(context, automation::IsoText(*moment));
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
    GiveText(context, automation::IsoText(automation::AddDays(*moment, sqlite3_value_int64(arguments[0]))));
  } catch (const automation::Error&) {
    sqlite3_result_error(context, "Adding a value to a 'datetime' column caused an overflow.", -1);
  } catch (...) {
    sqlite3_result_error_nomem(context);
  }
}

bool IsText(sqlite3_value* value) {
  const int type = sqlite3_value_type(value);
  return type == SQLITE_TEXT || type == SQLITE_BLOB;
}

void AsDate(sqlite3_context* context, int /*count*/, sqlite3_value** arguments) {
  if (sqlite3_value_type(arguments[0]) == SQLITE_NULL) return;
  try {
    const bool isText = IsText(arguments[0]);
    const std::string_view text = TextOf(arguments[0]);
    if (const auto moment = isText ? engine::ParseIso(text) : std::nullopt) {
      sqlite3_result_int64(context, moment->UnixMicroseconds());
    } else {
      GiveText(context, text);
    }
  } catch (...) {
    sqlite3_result_error_nomem(context);
  }
}

void AsBoolean(sqlite3_context* context, int /*count*/, sqlite3_value** arguments) {
  if (sqlite3_value_type(arguments[0]) == SQLITE_NULL) return;
  if (!IsText(arguments[0])) {
    sqlite3_result_int(context, sqlite3_value_double(arguments[0]) != 0 ? 1 : 0);
    return;
  }
  const std::string_view text = TextOf(arguments[0]);
  const bool isTrue = engine::EqualsIgnoringAsciiCase(text, "true");
  if (isTrue || engine::EqualsIgnoringAsciiCase(text, "false")) {
    sqlite3_result_int(context, isTrue ? 1 : 0);
  } else {
    GiveText(context, text);
  }
}

void Register(sqlite3* database, const char* name, int arguments,
              void (*function)(sqlite3_context*, int, sqlite3_value**)) {
  const int code = sqlite3_create_function_v2(database, name, arguments, SQLITE_UTF8 | SQLITE_DETERMINISTIC,
                                              nullptr, function, nullptr, nullptr, nullptr);
  if (code != SQLITE_OK) throw ErrorOf(database, code);
}

}  // namespace

void RegisterFunctions(sqlite3* database) {
  Register(database, "orvane_adddays", 2, &AddDays);
  Register(database, "orvane_moment", 1, &Moment);
  Register(database, "orvane_asdate", 1, &AsDate);
  Register(database, "orvane_asboolean", 1, &AsBoolean);
}

}  // namespace ADODB::sqlite
