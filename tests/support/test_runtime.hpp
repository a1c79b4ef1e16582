// A runtime of a test's own: a clock that stands still, a month/day/year locale, a configuration and a log
// that remember. Nothing is shared with other tests.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "components/interfaces/configuration.hpp"
#include "components/interfaces/log.hpp"
#include "platform/automation/runtime.hpp"

namespace orvane_test {

struct LogEntry {
  std::string errorSource;
  std::string message;
  std::int32_t code = 0;
  friend bool operator==(const LogEntry&, const LogEntry&) = default;
};

// What the fake configuration component answers, and what it was asked.
struct ConfigurationState {
  std::string rootPath = "/suite/home";
  std::string installDir = "/suite/home";
  std::map<std::pair<std::string, std::string>, std::string> connectionStrings;  // {product, connection}
  std::map<std::pair<std::string, std::string>, std::string> values;             // {section, key}
  std::vector<std::pair<std::string, std::int32_t>> selectedProducts;
  std::vector<std::string> loadedFiles;  // "" for Load()
  int created = 0;
  // Called with a member's name before the member answers; what it raises is what the member raises.
  std::function<void(std::string_view member)> before;
};

// Month/day/year with "/" and no leading zeros, 24-hour times; the code page is the identity on ASCII and "?"
// for the rest. Separator and order can be changed.
class FakeLocale : public automation::Locale {
 public:
  std::string separator = "/";
  bool dayFirst = false;
  bool failing = false;  // DateSeparator raises

  std::string DateSeparator() const override;
  std::string ShortDate(automation::DateTime value) const override;
  std::string GeneralDate(automation::DateTime value) const override;
  automation::DateTime ParseDateTime(std::string_view text) const override;
  std::string DateText(automation::DateTime value, int style, std::int32_t localeId) const override;
  std::string ToCodePage(std::string_view utf8) const override;
  std::string FromCodePage(std::string_view bytes) const override;
  std::string ToLower(std::string_view utf8) const override;
  std::string ToUpper(std::string_view utf8) const override;
};

// Counts votes and creations; creates through the runtime's class table.
class FakeObjectContext : public automation::ObjectContext {
 public:
  explicit FakeObjectContext(automation::Runtime& runtime) : runtime_(runtime) {}
  automation::ObjectPtr CreateInstance(std::string_view progId) override;
  void SetComplete() override {
    ++completes;
    if (onVote) onVote("SetComplete");
  }
  void SetAbort() override {
    ++aborts;
    if (onVote) onVote("SetAbort");
  }

  std::vector<std::string> created;
  bool answersNull = false;  // CreateInstance returns null
  std::function<void(std::string_view vote)> onVote;
  int completes = 0;
  int aborts = 0;

 private:
  automation::Runtime& runtime_;
};

// Builds the runtime and makes it current for as long as it lives.
class TestRuntime {
 public:
  TestRuntime();

  automation::Runtime runtime;
  automation::DateTime now = automation::DateTime::FromParts(
      {.year = 2004, .month = 7, .day = 26, .hour = 9, .minute = 5, .second = 3});
  std::shared_ptr<FakeLocale> locale = std::make_shared<FakeLocale>();
  std::shared_ptr<ConfigurationState> configuration = std::make_shared<ConfigurationState>();
  std::shared_ptr<std::vector<LogEntry>> log = std::make_shared<std::vector<LogEntry>>();

  // When set, makes the log component in place of the one that remembers its entries in `log`.
  std::function<automation::ObjectPtr()> logFactory;

  // Runs inside a component-services context from now on.
  std::shared_ptr<FakeObjectContext> EnterObjectContext();

 private:
  automation::RuntimeScope scope_;
};

}  // namespace orvane_test
