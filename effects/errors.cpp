#include <memory>
#include <utility>

#include "components/interfaces/log.hpp"
#include "effects/failure_listener.hpp"
#include "platform/automation/runtime.hpp"

namespace effects {
namespace {

class RecordedLog final : public Vantrel::Log {
 public:
  RecordedLog(Vantrel::LogPtr real, FailureListener& listener)
      : real_(std::move(real)), listener_(listener) {}

  void WriteLogEntry(std::string_view errorSource, std::string_view message, std::int32_t code,
                     automation::Variant& result) override {
    listener_.ErrorLogged(errorSource, message);
    real_->WriteLogEntry(errorSource, message, code, result);
  }

 private:
  const Vantrel::LogPtr real_;
  FailureListener& listener_;
};

}  // namespace

void RecordErrors(automation::ClassTable& classes, const automation::ClassTable& real,
                  FailureListener& listener) {
  classes.Register(Vantrel::kLogProgId, [real, &listener] {
    return std::make_shared<RecordedLog>(automation::As<Vantrel::Log>(real.Create(Vantrel::kLogProgId)),
                                         listener);
  });
}

}  // namespace effects
