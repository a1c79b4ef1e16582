#include <string>

#include "components/interfaces/sql_conversion.hpp"
#include "platform/automation/runtime.hpp"
#include "suite/database/columns.hpp"
#include "suite/database/suite_connection.hpp"
#include "suite/service_request/components.hpp"
#include "suite/service_request/prospect_rows.hpp"

namespace OrvServiceRequest {
namespace {

std::string Joined(const std::string& left, std::string_view separator, const std::string& right) {
  if (left.empty() || right.empty()) return left + right;
  return left + std::string(separator) + right;
}

class DatabaseProspect : public Prospect {
 public:
  std::string GetContactInfo(std::string_view emailAddress) override {
    const ADODB::ConnectionPtr connection = suite::OpenConnection("Orvane", "Orvane");
    std::string contact;
    if (KnowsProspects(connection, "EMAILID")) {
      const ADODB::RecordsetPtr rows =
          suite::OpenRows("select * from PROSPECT where " + ByEMail(emailAddress), connection);
      if (!rows->Eof()) {
        const std::string name =
            Joined(suite::OptionalText(*rows, "FIRSTNAME"), " ", suite::OptionalText(*rows, "LASTNAME"));
        contact = Joined(name, ", ", suite::OptionalText(*rows, "COMPANY"));
      }
      rows->Close();
    }
    connection->Close();
    return contact;
  }
};

}  // namespace

bool KnowsProspects(const ADODB::ConnectionPtr& connection, std::string_view otherColumn) {
  ADODB::RecordsetPtr rows;
  try {
    rows = suite::OpenRows("select * from PROSPECT where 0 = 1", connection);
  } catch (const automation::Error&) {
    return false;  // a suite without prospects
  }
  const bool known = suite::HasColumn(*rows, "EMAILID") && suite::HasColumn(*rows, otherColumn);
  rows->Close();
  return known;
}

ADODB::Statement ByEMail(std::string_view emailAddress) {
  const auto conversion = automation::CreateObject<OrvCommon::SqlConversion>(OrvCommon::kSqlConversionClass);
  ADODB::Statement condition = "EMAILID = ";
  condition += ADODB::SqlValue(conversion->ToLiteral(emailAddress));
  return condition;
}

std::shared_ptr<Prospect> MakeProspect() {
  return std::make_shared<DatabaseProspect>();
}

}  // namespace OrvServiceRequest
