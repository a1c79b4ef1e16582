#include "platform/automation/runtime.hpp"

#include <sys/time.h>

#include <ctime>

namespace automation {
namespace {

thread_local Runtime* currentRuntime = nullptr;

}  // namespace

Runtime::Runtime() : clock(&SystemClock) {}

RuntimeScope::RuntimeScope(Runtime& runtime) : previous_(currentRuntime) {
  currentRuntime = &runtime;
}

RuntimeScope::~RuntimeScope() {
  currentRuntime = previous_;
}

DateTime SystemClock() {
  timeval now{};
  gettimeofday(&now, nullptr);
  std::tm local{};
  localtime_r(&now.tv_sec, &local);
  // A leap second that the zone data may report is folded into the second before it.
  return DateTime::FromParts({.year = local.tm_year + 1900,
                              .month = local.tm_mon + 1,
                              .day = local.tm_mday,
                              .hour = local.tm_hour,
                              .minute = local.tm_min,
                              .second = local.tm_sec < 60 ? local.tm_sec : 59,
                              .microsecond = static_cast<int>(now.tv_usec)});
}

Runtime& CurrentRuntime() {
  if (currentRuntime == nullptr) throw Error(ErrorNumber::ObjectNotSet, "Runtime");
  return *currentRuntime;
}

ObjectPtr CreateObject(std::string_view progId) {
  return CurrentRuntime().classes.Create(progId);
}

std::shared_ptr<ObjectContext> GetObjectContext() {
  return CurrentRuntime().context;
}

DateTime Now() {
  return CurrentRuntime().clock();
}

const Locale& CurrentLocale() {
  const Runtime& runtime = CurrentRuntime();
  if (!runtime.locale) throw Error(ErrorNumber::ObjectNotSet, "Locale");
  return *runtime.locale;
}

}  // namespace automation
