#include "suite/service_request/registration.hpp"

#include "suite/service_request/components.hpp"

namespace OrvServiceRequest {

void RegisterServiceRequest(automation::ClassTable& classes, const std::filesystem::path& home) {
  classes.Register(kQuestionProgId, MakeQuestion);
  classes.Register(kProspectProgId, MakeProspect);
  classes.Register(kProspectStateClass,
                   [file = home / "outbox" / "prospects.jsonl"] { return MakeProspectState(file); });
  classes.Register(kQuestionStateClass,
                   [file = home / "outbox" / "questions.jsonl"] { return MakeQuestionState(file); });
}

}  // namespace OrvServiceRequest
