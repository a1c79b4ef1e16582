#include "suite/database/columns.hpp"
#include "suite/database/suite_connection.hpp"
#include "suite/service_request/components.hpp"

namespace OrvServiceRequest {
namespace {

CodeAndDescription Read(std::int32_t questionId, std::string_view codeColumn, std::string_view textColumn) {
  const ADODB::ConnectionPtr connection = suite::OpenConnection("Orvane", "Orvane");
  ADODB::Statement sql = "select * from QUESTIONS where Q_ID = ";
  sql += ADODB::SqlValue(questionId);
  const ADODB::RecordsetPtr rows = suite::OpenRows(sql, connection);
  CodeAndDescription result;
  if (!rows->Eof()) {
    result = {suite::OptionalText(*rows, codeColumn), suite::OptionalText(*rows, textColumn)};
  }
  rows->Close();
  connection->Close();
  return result;
}

class DatabaseQuestion : public Question {
 public:
  CodeAndDescription GetContractAndDescription(std::int32_t questionId) override {
    return Read(questionId, "CONTRACT", "CONTRACTDESC");
  }
  CodeAndDescription GetWarrantyAndDescription(std::int32_t questionId) override {
    return Read(questionId, "WARRANTY", "WARRANTYDESC");
  }
};

}  // namespace

std::shared_ptr<Question> MakeQuestion() {
  return std::make_shared<DatabaseQuestion>();
}

}  // namespace OrvServiceRequest
