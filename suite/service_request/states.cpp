#include <utility>

#include "platform/automation/runtime.hpp"
#include "suite/outbox/json_line.hpp"
#include "suite/outbox/outbox.hpp"
#include "suite/service_request/components.hpp"

namespace OrvServiceRequest {
namespace {

class OutboxProspectState : public ProspectState {
 public:
  explicit OutboxProspectState(std::filesystem::path file) : file_(std::move(file)) {}

  void QuestionConcluded(std::string_view emailAddress, std::string_view comment, bool concluded) override {
    suite::JsonLine line;
    line.Add("TIME", automation::Now()).Add("EVENT", "question");
    line.Add("EMAILID", std::string(emailAddress)).Add("COMMENT", std::string(comment));
    line.Add("CONCLUDED", concluded);
    suite::AppendToOutbox(file_, line.Text(), kProspectStateClass);
  }

 private:
  const std::filesystem::path file_;
};

class OutboxQuestionState : public QuestionState {
 public:
  explicit OutboxQuestionState(std::filesystem::path file) : file_(std::move(file)) {}

  void Concluded(std::int32_t questionId) override {
    suite::JsonLine line;
    line.Add("TIME", automation::Now()).Add("EVENT", "concluded").Add("QUESTION", questionId);
    suite::AppendToOutbox(file_, line.Text(), kQuestionStateClass);
  }

 private:
  const std::filesystem::path file_;
};

}  // namespace

std::shared_ptr<ProspectState> MakeProspectState(const std::filesystem::path& outboxFile) {
  return std::make_shared<OutboxProspectState>(outboxFile);
}

std::shared_ptr<QuestionState> MakeQuestionState(const std::filesystem::path& outboxFile) {
  return std::make_shared<OutboxQuestionState>(outboxFile);
}

}  // namespace OrvServiceRequest
