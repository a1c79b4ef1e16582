#include "platform/adodb/odbc/driver.hpp"

#include <string>
#include <string_view>

namespace ADODB::odbc {
namespace {

void Rename(engine::ConnectionString& text, std::string_view from, std::string_view to) {
  const auto value = text.Value(from);
  text.Remove(from);
  if (value && !text.Value(to)) text.Set(to, *value);
}

}  // namespace

engine::ConnectionString ForDriver(const engine::ConnectionString& given, const engine::EngineEntry* engine) {
  engine::ConnectionString text = given;
  text.Remove("Provider");
  Rename(text, "User ID", "UID");
  Rename(text, "Password", "PWD");
  if (engine == nullptr) return text;
  for (const auto& [keyword, value] : engine->traits().options) {
    if (!text.Value(keyword)) text.Set(keyword, std::string(value));
  }
  return text;
}

}  // namespace ADODB::odbc
