// The descriptions that the archive files carry instead of numbers, and the job's own small reads.
#include "common/connections.hpp"
#include "common/directory_users.hpp"
#include "common/parameters.hpp"
#include "components/interfaces/configuration.hpp"
#include "jobs/archive/archive.hpp"
#include "platform/automation/runtime.hpp"

namespace OrvaneProcess {
namespace {

// A table keyed by the decimal text of the key column; null when the query has no rows, so that a lookup in
// it fails instead of writing files without descriptions.
Scripting::DictionaryPtr LoadTable(const ADODB::ConnectionPtr& connection, const ADODB::Statement& query,
                                   const char* keyColumn, const char* valueColumn) {
  auto rows = automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
  Scripting::DictionaryPtr table;
  try {
    rows->Open(query, connection, ADODB::CursorType::ForwardOnly, ADODB::LockType::ReadOnly,
               ADODB::kOptionsUnspecified);
    for (; !rows->Eof(); rows->MoveNext()) {
      if (!table) table = automation::CreateObject<Scripting::Dictionary>("Scripting.Dictionary");
      table->Add(std::to_string(automation::ToInt32(rows->Value(keyColumn))),
                 automation::ToTextOrEmpty(rows->Value(valueColumn)));
    }
  } catch (...) {
    OrvaneUtilities::CloseRecordset(rows);
    throw;
  }
  OrvaneUtilities::CloseRecordset(rows);
  return table;
}

std::string Lookup(const Scripting::DictionaryPtr& table, std::int32_t id) {
  if (!table) throw automation::Error(automation::ErrorNumber::ObjectNotSet, kArchiveSource);
  return automation::ToText(table->Item(std::to_string(id)));
}

std::string LookupUnlessZero(const Scripting::DictionaryPtr& table, std::int32_t id) {
  return id == 0 ? std::string() : Lookup(table, id);
}

}  // namespace

void Archive::loadLookups() {
  ADODB::ConnectionPtr catalogue = OrvaneUtilities::GetECatalogConnection();
  try {
    m_oFAQCategories =
        LoadTable(catalogue, "Select * from FAQCATEGORY", "FAQCATEGORYID", "FAQCATEGORYDESCRIPTION");
    m_oProductCategories = LoadTable(catalogue, "Select CATEGORYID,CATEGORYNAME from PRODUCTCATEGORY",
                                     "CATEGORYID", "CATEGORYNAME");
    m_oProducts = LoadTable(catalogue, "Select PRODUCTID,PRODUCTDESCRIPTION from PRODUCT", "PRODUCTID",
                            "PRODUCTDESCRIPTION");
  } catch (...) {
    OrvaneUtilities::CloseConnection(catalogue);
    throw;
  }
  OrvaneUtilities::CloseConnection(catalogue);

  m_oStatuses = automation::CreateObject<Scripting::Dictionary>("Scripting.Dictionary");
  m_oStatuses->Add("175", "LBLQX3077");
  m_oStatuses->Add("180", "LBLQX3557");
  m_oStatuses->Add("185", "LBLQX3558");
}

std::string Archive::getStatusLabel(std::int32_t status) const {
  return Lookup(m_oStatuses, status);
}

std::string Archive::getProductCategoryName(std::int32_t id) const {
  return LookupUnlessZero(m_oProductCategories, id);
}

std::string Archive::getProductDescription(std::int32_t id) const {
  return LookupUnlessZero(m_oProducts, id);
}

std::string Archive::getFAQCategoryDescription(std::int32_t id) const {
  return LookupUnlessZero(m_oFAQCategories, id);
}

std::string Archive::getParameter(const std::string& name) {
  ADODB::Statement query = "select PARAM_VALUE from PARAMETERS where PARAM_NAME='";
  query += ADODB::SqlValue(name);
  query += "'";
  return OrvaneUtilities::ReadParameterValue(query);
}

std::string Archive::getFAQParameter(const std::string& name) {
  ADODB::Statement query = "select PARAMVALUE from FAQPARAMETER where PARAMNAME='";
  query += ADODB::SqlValue(name);
  query += "'";
  ADODB::ConnectionPtr catalogue = OrvaneUtilities::GetECatalogConnection();
  ADODB::RecordsetPtr rows;
  std::string value;
  try {
    rows = automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
    rows->Open(query, catalogue, ADODB::CursorType::ForwardOnly, ADODB::LockType::ReadOnly,
               ADODB::kOptionsUnspecified);
    if (!rows->Eof()) value = automation::ToTextOrEmpty(rows->Value("PARAMVALUE"));
  } catch (...) {
    OrvaneUtilities::CloseRecordset(rows);
    OrvaneUtilities::CloseConnection(catalogue);
    throw;
  }
  OrvaneUtilities::CloseRecordset(rows);
  OrvaneUtilities::CloseConnection(catalogue);
  return value;
}

std::string Archive::getRootPath() {
  return automation::CreateObject<Vantrel::Configuration>(Vantrel::kConfigurationProgId)->RootPath();
}

VnMembership::UserPtr Archive::getMembershipUser(const std::string& userID) {
  return OrvaneUtilities::FindMembershipUser([] { return getRootPath() + "\\config\\SiteConfiguration.xml"; },
                                             userID);
}

}  // namespace OrvaneProcess
