// The surroundings of job code: what it can create, what time it is, which locale it runs in.
//
// A Runtime is an ordinary object. A RuntimeScope makes it the current thread's; the free functions below
// then answer from it. There is no process-wide state, so tests with runtimes of their own can run side by
// side.
#pragma once

#include <functional>
#include <memory>
#include <string_view>
#include <utility>

#include "platform/automation/class_table.hpp"
#include "platform/automation/date_time.hpp"
#include "platform/automation/error.hpp"
#include "platform/automation/export.hpp"
#include "platform/automation/locale.hpp"
#include "platform/automation/object.hpp"
#include "platform/automation/object_context.hpp"

namespace automation {

struct ORVANE_EXPORT Runtime {
  ClassTable classes;
  std::shared_ptr<ObjectContext> context;  // null outside component services
  std::function<DateTime()> clock;       // the local date and time; SystemClock() unless a test sets its own
  std::shared_ptr<const Locale> locale;  // null: a call that needs it raises 91

  Runtime();
};

// Makes `runtime` the current thread's until the scope ends; scopes nest. `runtime` must outlive the scope.
class ORVANE_EXPORT RuntimeScope {
 public:
  explicit RuntimeScope(Runtime& runtime);
  ~RuntimeScope();
  RuntimeScope(const RuntimeScope&) = delete;
  RuntimeScope& operator=(const RuntimeScope&) = delete;

 private:
  Runtime* previous_;
};

// The operating system's local date and time, to the microsecond.
ORVANE_EXPORT DateTime SystemClock();

// The current thread's runtime; 91 when no scope is open.
ORVANE_EXPORT Runtime& CurrentRuntime();

// What the current runtime answers.
ORVANE_EXPORT ObjectPtr CreateObject(std::string_view progId);
ORVANE_EXPORT std::shared_ptr<ObjectContext> GetObjectContext();
ORVANE_EXPORT DateTime Now();
ORVANE_EXPORT const Locale& CurrentLocale();

// `object` seen through the interface T; 430 when it does not have it, 91 when it is null.
template <class T>
std::shared_ptr<T> As(ObjectPtr object) {
  if (!object) throw Error(ErrorNumber::ObjectNotSet);
  T* const interface = dynamic_cast<T*>(object.get());
  if (interface == nullptr) throw Error(ErrorNumber::InterfaceNotSupported);
  return std::shared_ptr<T>(std::move(object), interface);
}

template <class T>
std::shared_ptr<T> CreateObject(std::string_view progId) {
  ClassTable::Typed created = CurrentRuntime().classes.CreateTyped(progId);
  if (created.object && created.interface != nullptr && *created.interface == typeid(T)) {
    return std::static_pointer_cast<T>(std::move(created.object));
  }
  return As<T>(std::move(created.object));
}

}  // namespace automation
