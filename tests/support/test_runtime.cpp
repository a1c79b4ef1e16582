#include "tests/support/test_runtime.hpp"

#include <cstdio>

#include "platform/base/text.hpp"

namespace orvane_test {
namespace {

class FakeConfiguration : public Vantrel::Configuration {
 public:
  explicit FakeConfiguration(std::shared_ptr<ConfigurationState> state) : state_(std::move(state)) {
    ++state_->created;
  }

  std::string RootPath() const override {
    Before("RootPath");
    return state_->rootPath;
  }
  void SelectProduct(std::string_view product, std::int32_t flag) override {
    Before("SelectProduct");
    product_ = product;
    state_->selectedProducts.emplace_back(product, flag);
  }
  const std::string& GetConnectionString(std::string_view connection) override {
    Before("GetConnectionString");
    return Find(state_->connectionStrings, product_, connection);
  }
  std::string getInstallDir() override {
    Before("getInstallDir");
    return state_->installDir;
  }
  void Load() override { LoadFile(""); }
  void LoadFile(std::string_view path) override {
    Before("LoadFile");
    loaded_ = true;
    state_->loadedFiles.emplace_back(path);
  }
  automation::Variant GetValue(std::string_view section, std::string_view key) const override {
    Before("GetValue");
    if (!loaded_) throw automation::Error(1000, "Vantrel.Configuration", "not loaded");
    return Find(state_->values, section, key);
  }

 private:
  void Before(std::string_view member) const {
    if (state_->before) state_->before(member);
  }
  static const std::string& Find(const std::map<std::pair<std::string, std::string>, std::string>& table,
                                 std::string_view first, std::string_view second) {
    const auto found = table.find({std::string(first), std::string(second)});
    if (found == table.end()) {
      throw automation::Error(1001, "Vantrel.Configuration",
                              "no value for " + std::string(first) + "/" + std::string(second));
    }
    return found->second;
  }

  std::shared_ptr<ConfigurationState> state_;
  std::string product_;
  bool loaded_ = false;
};

class RecordingLog : public Vantrel::Log {
 public:
  explicit RecordingLog(std::shared_ptr<std::vector<LogEntry>> entries) : entries_(std::move(entries)) {}
  void WriteLogEntry(std::string_view errorSource, std::string_view message, std::int32_t code,
                     automation::Variant& result) override {
    entries_->push_back({std::string(errorSource), std::string(message), code});
    result = true;
  }

 private:
  std::shared_ptr<std::vector<LogEntry>> entries_;
};

}  // namespace

std::string FakeLocale::DateSeparator() const {
  if (failing) throw automation::Error(automation::ErrorNumber::InvalidProcedureCall);
  return separator;
}

std::string FakeLocale::ShortDate(automation::DateTime value) const {
  const automation::DateTimeParts parts = value.Parts();
  const int first = dayFirst ? parts.day : parts.month;
  const int second = dayFirst ? parts.month : parts.day;
  return std::to_string(first) + separator + std::to_string(second) + separator + std::to_string(parts.year);
}

std::string FakeLocale::GeneralDate(automation::DateTime value) const {
  const automation::DateTimeParts parts = value.Parts();
  std::string text = ShortDate(value);
  if (value.WithoutFraction() != value.DatePart()) {
    char time[16];
    std::snprintf(time, sizeof time, " %02d:%02d:%02d", parts.hour % 100, parts.minute % 100,
                  parts.second % 100);
    text += time;
  }
  return text;
}

automation::DateTime FakeLocale::ParseDateTime(std::string_view text) const {
  automation::DateTimeParts parts;
  const std::string copy(text);
  int first = 0, second = 0, third = 0, read = 0;
  if (std::sscanf(copy.c_str(), "%d%*1[-/.]%d%*1[-/.]%d%n", &first, &second, &third, &read) < 3) {
    throw automation::Error(automation::ErrorNumber::TypeMismatch);
  }
  if (first > 31) {
    parts.year = first, parts.month = second, parts.day = third;
  } else {
    parts.month = dayFirst ? second : first;
    parts.day = dayFirst ? first : second;
    parts.year = third;
  }
  parts.hour = parts.minute = parts.second = 0;
  if (copy[static_cast<std::size_t>(read)] != '\0' &&
      std::sscanf(copy.c_str() + read, " %d:%d:%d", &parts.hour, &parts.minute, &parts.second) != 3) {
    throw automation::Error(automation::ErrorNumber::TypeMismatch);
  }
  if (!automation::DateTime::IsValid(parts)) throw automation::Error(automation::ErrorNumber::TypeMismatch);
  return automation::DateTime::FromParts(parts);
}

std::string FakeLocale::DateText(automation::DateTime value, int style, std::int32_t localeId) const {
  return GeneralDate(value) + "[" + std::to_string(style) + "," + std::to_string(localeId) + "]";
}

std::string FakeLocale::ToCodePage(std::string_view utf8) const {
  std::string bytes;
  for (const char c : utf8) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80) bytes += c;
    if (byte >= 0xC0) bytes += '?';  // one for each character, not for each of its bytes
  }
  return bytes;
}

std::string FakeLocale::FromCodePage(std::string_view bytes) const {
  return std::string(bytes);
}

std::string FakeLocale::ToLower(std::string_view utf8) const {
  return base::ToAsciiLower(utf8);
}

std::string FakeLocale::ToUpper(std::string_view utf8) const {
  return base::ToAsciiUpper(utf8);
}

automation::ObjectPtr FakeObjectContext::CreateInstance(std::string_view progId) {
  created.emplace_back(progId);
  if (answersNull) return nullptr;
  return runtime_.classes.Create(progId);
}

TestRuntime::TestRuntime() : scope_(runtime) {
  runtime.locale = locale;
  runtime.clock = [this] { return now; };
  runtime.classes.Register(Vantrel::kConfigurationProgId,
                           [state = configuration] { return std::make_shared<FakeConfiguration>(state); });
  runtime.classes.Register(Vantrel::kLogProgId, [this]() -> automation::ObjectPtr {
    if (logFactory) return logFactory();
    return std::make_shared<RecordingLog>(log);
  });
}

std::shared_ptr<FakeObjectContext> TestRuntime::EnterObjectContext() {
  auto context = std::make_shared<FakeObjectContext>(runtime);
  runtime.context = context;
  return context;
}

}  // namespace orvane_test
