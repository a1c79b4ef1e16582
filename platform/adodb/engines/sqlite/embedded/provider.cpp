#include "platform/adodb/engines/sqlite/embedded/provider.hpp"

#include <sqlite3.h>

#include <algorithm>
#include <charconv>
#include <utility>

#include "platform/adodb/engines/sqlite/embedded/connection.hpp"
#include "platform/adodb/sql/tokens.hpp"
#include "platform/automation/error.hpp"

namespace ADODB::sqlite {
namespace {

[[noreturn]] void Refuse(std::string_view keyword, const std::string& value) {
  throw automation::Error(
      automation::ErrorNumber::ArgumentsInvalid, "SQLite",
      "The connection string's value of '" + std::string(keyword) + "' is not valid: '" + value + "'.");
}

class SqliteProvider : public engine::Provider {
 public:
  SqliteProvider(std::filesystem::path baseFolder, Opener open)
      : baseFolder_(std::move(baseFolder)), open_(std::move(open)) {}

  std::string_view Name() const override { return "SQLite"; }

  std::unique_ptr<engine::Session> Connect(const engine::ConnectionString& text) override {
    OpenSettings settings;
    settings.path = Path(text.Value("Data Source").value_or(""));
    settings.flags = Flags(text.Value("Mode").value_or("ReadWrite"));
    if (const auto timeout = text.Value("Timeout")) settings.timeoutMilliseconds = Milliseconds(*timeout);
    if (const auto synchronous = text.Value("Synchronous")) {
      settings.fullSynchronous = engine::EqualsIgnoringAsciiCase(*synchronous, "FULL");
      if (!settings.fullSynchronous && !engine::EqualsIgnoringAsciiCase(*synchronous, "NORMAL")) {
        Refuse("Synchronous", *synchronous);
      }
    }
    return open_(settings);
  }

 private:
  std::string Path(std::string source) const {
    // An empty name would be a database in memory that nobody else sees.
    if (source.empty()) Refuse("Data Source", source);
    std::replace(source.begin(), source.end(), '\\', '/');
    return (baseFolder_ / source).lexically_normal().string();
  }

  static int Flags(const std::string& mode) {
    if (engine::EqualsIgnoringAsciiCase(mode, "ReadWrite")) return SQLITE_OPEN_READWRITE;
    if (engine::EqualsIgnoringAsciiCase(mode, "Read")) return SQLITE_OPEN_READONLY;
    if (engine::EqualsIgnoringAsciiCase(mode, "ReadWriteCreate"))
      return SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
    Refuse("Mode", mode);
  }

  static int Milliseconds(const std::string& seconds) {
    int value = 0;
    const char* end = seconds.data() + seconds.size();
    const auto [stop, problem] = std::from_chars(seconds.data(), end, value);
    constexpr int kLongest = 3600;
    if (problem != std::errc{} || stop != end || value < 0 || value > kLongest) Refuse("Timeout", seconds);
    return value * 1000;
  }

  const std::filesystem::path baseFolder_;
  const Opener open_;
};

}  // namespace

std::shared_ptr<engine::Provider> MakeProvider(std::filesystem::path baseFolder) {
  return MakeProvider(std::move(baseFolder),
                      [](const OpenSettings& settings) { return std::make_unique<Connection>(settings); });
}

std::shared_ptr<engine::Provider> MakeProvider(std::filesystem::path baseFolder, Opener open) {
  return std::make_shared<SqliteProvider>(std::move(baseFolder), std::move(open));
}

void LeaveMemoryUncounted() {
  sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
}

}  // namespace ADODB::sqlite
