#include <utility>

#include "platform/automation/runtime.hpp"
#include "suite/database/suite_connection.hpp"
#include "suite/outbox/json_line.hpp"
#include "suite/outbox/outbox.hpp"
#include "suite/service_request/components.hpp"
#include "suite/service_request/prospect_rows.hpp"

namespace OrvServiceRequest {
namespace {

class DatabaseProspectState : public ProspectState {
 public:
  void QuestionConcluded(std::string_view emailAddress, std::string_view, bool concluded) override {
    if (!concluded || emailAddress.empty()) return;
    const ADODB::ConnectionPtr connection = suite::OpenConnection("Orvane", "Orvane");
    if (KnowsProspects(connection, "PENDINGQUESTIONS")) {
      ADODB::Statement sql =
          "UPDATE PROSPECT SET PENDINGQUESTIONS = PENDINGQUESTIONS - 1 WHERE PENDINGQUESTIONS > 0 AND ";
      sql += ByEMail(emailAddress);
      connection->Execute(sql, nullptr, ADODB::kExecuteNoRecords);
    }
    connection->Close();
  }
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

std::shared_ptr<ProspectState> MakeProspectState() {
  return std::make_shared<DatabaseProspectState>();
}

std::shared_ptr<QuestionState> MakeQuestionState(const std::filesystem::path& outboxFile) {
  return std::make_shared<OutboxQuestionState>(outboxFile);
}

}  // namespace OrvServiceRequest
