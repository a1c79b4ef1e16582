#include "effects/preview/silent_components.hpp"

#include <memory>

#include "components/interfaces/backend_calls.hpp"
#include "components/interfaces/escalation.hpp"
#include "components/interfaces/log.hpp"
#include "components/interfaces/service_request.hpp"

namespace effects {
namespace {

class SilentLog final : public Vantrel::Log {
 public:
  void WriteLogEntry(std::string_view, std::string_view, std::int32_t, automation::Variant& result) override {
    result = true;
  }
};

class SilentCalls final : public OrvaneBackend::Calls {
 public:
  void UpdateCall(std::string& message, const Scripting::DictionaryPtr&) override { message.clear(); }
};

class SilentEscalation final : public OrvaneProcessMTS::SolveOnNoResponse {
 public:
  void SendingEscalationMails() override {}
};

class SilentProspectState final : public OrvServiceRequest::ProspectState {
 public:
  void QuestionConcluded(std::string_view, std::string_view, bool) override {}
};

class SilentQuestionState final : public OrvServiceRequest::QuestionState {
 public:
  void Concluded(std::int32_t) override {}
};

template <class Class>
void Register(automation::ClassTable& classes, std::string_view progId) {
  classes.Register(progId, [] { return std::make_shared<Class>(); });
}

}  // namespace

void RegisterSilentLog(automation::ClassTable& classes) {
  Register<SilentLog>(classes, Vantrel::kLogProgId);
}

void RegisterSilentComponents(automation::ClassTable& classes) {
  Register<SilentCalls>(classes, OrvaneBackend::kCallsAProgId);
  Register<SilentCalls>(classes, OrvaneBackend::kCallsBProgId);
  Register<SilentEscalation>(classes, OrvaneProcessMTS::kSolveOnNoResponseProgId);
  Register<SilentProspectState>(classes, OrvServiceRequest::kProspectStateClass);
  Register<SilentQuestionState>(classes, OrvServiceRequest::kQuestionStateClass);
}

}  // namespace effects
