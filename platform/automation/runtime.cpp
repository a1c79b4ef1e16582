#include "platform/automation/runtime.hpp"

#include <sys/time.h>

#include "platform/automation/local_time.hpp"

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
  return LocalTime({.tv_sec = now.tv_sec, .tv_nsec = now.tv_usec * 1000});
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
