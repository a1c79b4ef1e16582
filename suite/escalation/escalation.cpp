#include "suite/escalation/escalation.hpp"

#include <memory>
#include <utility>

#include "components/interfaces/escalation.hpp"
#include "platform/automation/runtime.hpp"
#include "suite/outbox/json_line.hpp"
#include "suite/outbox/outbox.hpp"

namespace OrvaneProcessMTS {
namespace {

class OutboxEscalation : public SolveOnNoResponse {
 public:
  explicit OutboxEscalation(std::filesystem::path file) : file_(std::move(file)) {}

  void SendingEscalationMails() override {
    suite::JsonLine line;
    line.Add("TIME", automation::Now()).Add("REQUEST", "SendingEscalationMails");
    suite::AppendToOutbox(file_, line.Text(), kSolveOnNoResponseProgId);
  }

 private:
  const std::filesystem::path file_;
};

}  // namespace

void RegisterEscalation(automation::ClassTable& classes, const std::filesystem::path& home) {
  classes.Register(kSolveOnNoResponseProgId, [file = home / "outbox" / "escalation.jsonl"] {
    return std::make_shared<OutboxEscalation>(file);
  });
}

}  // namespace OrvaneProcessMTS
