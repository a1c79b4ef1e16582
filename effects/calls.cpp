#include <memory>
#include <utility>

#include "components/interfaces/backend_calls.hpp"
#include "components/interfaces/escalation.hpp"
#include "components/interfaces/service_request.hpp"
#include "effects/wrappers.hpp"
#include "platform/automation/runtime.hpp"

namespace effects {
namespace {

using automation::Variant;

// The values as they are; what is neither text nor number, nor a date, by its kind.
ADODB::NamedRow Arguments(const Scripting::DictionaryPtr& values) {
  ADODB::NamedRow arguments;
  if (!values) return arguments;
  for (const Variant& key : values->Keys()) {
    arguments.push_back({automation::ToTextOrEmpty(key), values->Item(key)});
  }
  return arguments;
}

class RecordedCalls final : public OrvaneBackend::Calls {
 public:
  RecordedCalls(OrvaneBackend::CallsPtr real, Recorder& recorder, std::string_view component)
      : real_(std::move(real)), recorder_(recorder), component_(component) {}

  void UpdateCall(std::string& message, const Scripting::DictionaryPtr& values) override {
    recorder_.Do(ComponentCall{ComponentCall::Kind::Erp, component_, "UpdateCall", Arguments(values)},
                 [&] { real_->UpdateCall(message, values); });
  }

 private:
  const OrvaneBackend::CallsPtr real_;
  Recorder& recorder_;
  const std::string component_;
};

class RecordedEscalation final : public OrvaneProcessMTS::SolveOnNoResponse {
 public:
  RecordedEscalation(std::shared_ptr<SolveOnNoResponse> real, Recorder& recorder, std::string_view component)
      : real_(std::move(real)), recorder_(recorder), component_(component) {}

  void SendingEscalationMails() override {
    recorder_.Do(ComponentCall{ComponentCall::Kind::Event, component_, "SendingEscalationMails", {}},
                 [&] { real_->SendingEscalationMails(); });
  }

 private:
  const std::shared_ptr<SolveOnNoResponse> real_;
  Recorder& recorder_;
  const std::string component_;
};

class RecordedProspectState final : public OrvServiceRequest::ProspectState {
 public:
  RecordedProspectState(std::shared_ptr<ProspectState> real, Recorder& recorder, std::string_view component)
      : real_(std::move(real)), recorder_(recorder), component_(component) {}

  void QuestionConcluded(std::string_view emailAddress, std::string_view comment, bool concluded) override {
    recorder_.Do(ComponentCall{ComponentCall::Kind::Event,
                               component_,
                               "QuestionConcluded",
                               {{"emailAddress", Variant(emailAddress)},
                                {"comment", Variant(comment)},
                                {"concluded", Variant(concluded)}}},
                 [&] { real_->QuestionConcluded(emailAddress, comment, concluded); });
  }

 private:
  const std::shared_ptr<ProspectState> real_;
  Recorder& recorder_;
  const std::string component_;
};

class RecordedQuestionState final : public OrvServiceRequest::QuestionState {
 public:
  RecordedQuestionState(std::shared_ptr<QuestionState> real, Recorder& recorder, std::string_view component)
      : real_(std::move(real)), recorder_(recorder), component_(component) {}

  void Concluded(std::int32_t questionId) override {
    recorder_.Do(
        ComponentCall{
            ComponentCall::Kind::Event, component_, "Concluded", {{"questionId", Variant(questionId)}}},
        [&] { real_->Concluded(questionId); });
  }

 private:
  const std::shared_ptr<QuestionState> real_;
  Recorder& recorder_;
  const std::string component_;
};

template <class Interface, class Recorded>
void Wrap(automation::ClassTable& classes, const automation::ClassTable& real, Recorder& recorder,
          std::string_view component) {
  if (!real.Contains(component)) return;
  classes.Register(component, [real, &recorder, component] {
    return std::make_shared<Recorded>(automation::As<Interface>(real.Create(component)), recorder, component);
  });
}

}  // namespace

void RecordCalls(automation::ClassTable& classes, const automation::ClassTable& real, Recorder& recorder) {
  for (const std::string_view component : {OrvaneBackend::kCallsAProgId, OrvaneBackend::kCallsBProgId}) {
    Wrap<OrvaneBackend::Calls, RecordedCalls>(classes, real, recorder, component);
  }
  Wrap<OrvaneProcessMTS::SolveOnNoResponse, RecordedEscalation>(classes, real, recorder,
                                                                OrvaneProcessMTS::kSolveOnNoResponseProgId);
  Wrap<OrvServiceRequest::ProspectState, RecordedProspectState>(classes, real, recorder,
                                                                OrvServiceRequest::kProspectStateClass);
  Wrap<OrvServiceRequest::QuestionState, RecordedQuestionState>(classes, real, recorder,
                                                                OrvServiceRequest::kQuestionStateClass);
}

}  // namespace effects
