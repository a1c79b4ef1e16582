#include "platform/adodb/engines/table.hpp"

#include <algorithm>
#include <string>

#include "platform/adodb/engines/mariadb/dialect.hpp"
#include "platform/adodb/engines/mariadb/failures.hpp"
#include "platform/adodb/engines/mariadb/traits.hpp"
#include "platform/adodb/engines/postgresql/dialect.hpp"
#include "platform/adodb/engines/postgresql/failures.hpp"
#include "platform/adodb/engines/postgresql/traits.hpp"
#include "platform/adodb/engines/sqlite/dialect.hpp"
#include "platform/adodb/engines/sqlite/failures.hpp"
#include "platform/adodb/engines/sqlite/traits.hpp"
#include "platform/adodb/engines/sqlserver/dialect.hpp"
#include "platform/adodb/engines/sqlserver/failures.hpp"
#include "platform/adodb/engines/sqlserver/traits.hpp"
#include "platform/adodb/sql/tokens.hpp"

namespace ADODB::engine {
namespace {

constexpr EngineEntry kEngines[] = {
    {"sqlite", &SqliteDialect, &SqliteTraits, &SqliteFailures},
    {"postgresql", &PostgreSqlDialect, &PostgreSqlTraits, &PostgreSqlFailures},
    {"mariadb", &MariaDbDialect, &MariaDbTraits, &MariaDbFailures},
    {"sqlserver", &SqlServerDialect, &SqlServerTraits, &SqlServerFailures},
};

template <class Matches>
const EngineEntry* First(Matches matches) {
  const auto* const found = std::find_if(std::begin(kEngines), std::end(kEngines),
                                         [&](const EngineEntry& entry) { return matches(entry.traits()); });
  return found == std::end(kEngines) ? nullptr : found;
}

}  // namespace

std::span<const EngineEntry> Engines() {
  return kEngines;
}

const EngineEntry* EngineOfDriver(std::string_view driver) {
  const std::string name = base::ToAsciiLower(driver);
  return First([&](const Traits& traits) {
    return std::any_of(traits.drivers.begin(), traits.drivers.end(),
                       [&](std::string_view word) { return name.find(word) != std::string::npos; });
  });
}

const EngineEntry* EngineOf(const ConnectionString& text) {
  if (const auto driver = text.Value("Driver")) return EngineOfDriver(*driver);
  const std::string provider = text.Value("Provider").value_or("");
  return First([&](const Traits& traits) {
    return traits.drivers.empty() && EqualsIgnoringAsciiCase(traits.provider, provider);
  });
}

}  // namespace ADODB::engine
