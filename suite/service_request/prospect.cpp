#include <cstdint>
#include <string>
#include <string_view>

#include "components/interfaces/sql_conversion.hpp"
#include "platform/automation/error.hpp"
#include "platform/automation/runtime.hpp"
#include "suite/database/columns.hpp"
#include "suite/database/suite_connection.hpp"
#include "suite/service_request/components.hpp"

namespace OrvServiceRequest {
namespace {

std::string Joined(const std::string& left, std::string_view separator, const std::string& right) {
  if (left.empty() || right.empty()) return left + right;
  return left + std::string(separator) + right;
}

// What every provider raises for a table that is not there (80040E37).
constexpr std::int32_t kNoSuchTable = -2147217865;

// Whether prospects can be found by mail address: the suite has a table of them, with that column. Any other
// failure than a missing table is one: it must not pass for a prospect without a name.
bool KnowsAddresses(const ADODB::ConnectionPtr& connection) {
  ADODB::RecordsetPtr rows;
  try {
    rows = suite::OpenRows("select * from PROSPECT where 0 = 1", connection);
  } catch (const automation::Error& error) {
    if (error.Number() == kNoSuchTable) return false;
    throw;
  }
  const bool known = suite::HasColumn(*rows, "EMAILID");
  rows->Close();
  return known;
}

class DatabaseProspect : public Prospect {
 public:
  std::string GetContactInfo(std::string_view emailAddress) override {
    const ADODB::ConnectionPtr connection = suite::OpenConnection("Orvane", "Orvane");
    std::string contact;
    if (KnowsAddresses(connection)) {
      const auto conversion =
          automation::CreateObject<OrvCommon::SqlConversion>(OrvCommon::kSqlConversionClass);
      ADODB::Statement sql = "select * from PROSPECT where EMAILID = ";
      sql += ADODB::SqlValue(conversion->ToLiteral(emailAddress));
      const ADODB::RecordsetPtr rows = suite::OpenRows(sql, connection);
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

std::shared_ptr<Prospect> MakeProspect() {
  return std::make_shared<DatabaseProspect>();
}

}  // namespace OrvServiceRequest
