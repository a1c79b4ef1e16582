#include <memory>
#include <utility>

#include "components/interfaces/log.hpp"
#include "effects/wrappers.hpp"
#include "platform/automation/runtime.hpp"

namespace effects {
namespace {

class RecordedLog final : public Vantrel::Log {
 public:
  RecordedLog(Vantrel::LogPtr real, Recorder& recorder) : real_(std::move(real)), recorder_(recorder) {}

  void WriteLogEntry(std::string_view errorSource, std::string_view message, std::int32_t code,
                     automation::Variant& result) override {
    recorder_.ErrorLogged(message);
    real_->WriteLogEntry(errorSource, message, code, result);
  }

 private:
  const Vantrel::LogPtr real_;
  Recorder& recorder_;
};

}  // namespace

void RecordErrors(automation::ClassTable& classes, const automation::ClassTable& real, Recorder& recorder) {
  if (!real.Contains(Vantrel::kLogProgId)) return;
  classes.Register(Vantrel::kLogProgId, [real, &recorder] {
    return std::make_shared<RecordedLog>(automation::As<Vantrel::Log>(real.Create(Vantrel::kLogProgId)),
                                         recorder);
  });
}

}  // namespace effects
