// The XML document of a mail. The suite's style sheets know it by its element names and their order.
#include <cstdint>
#include <string>

#include "common/error_reporting.hpp"
#include "common/localized_text.hpp"
#include "components/interfaces/service_request.hpp"
#include "jobs/solve/document_parts.hpp"
#include "jobs/solve/known_user.hpp"
#include "jobs/solve/solve_on_no_response.hpp"
#include "platform/automation/runtime.hpp"

namespace OrvaneProcess {
namespace {

constexpr std::int32_t kProductGeneration = 1;
constexpr std::int32_t kFirstObjectGeneration = 3;
constexpr std::int32_t kSecondObjectGeneration = 8;

automation::Variant Column(const ADODB::RecordsetPtr& question, std::string_view name) {
  return Require(question)->Value(name);
}

}  // namespace

void SolveOnNoResponseJob::createNewChildNode(const MSXML2::NodePtr& parent, std::string_view name,
                                              const automation::Variant& value) {
  const MSXML2::NodePtr element = Require(m_oMailDoc)->createNode(MSXML2::NodeType::Element, name, "");
  if (!value.IsNull()) element->setText(automation::ToText(value));
  Require(parent)->appendChild(element);
}

void SolveOnNoResponseJob::formSRDetailsNodes() {
  try {
    const std::int32_t language = KnownUser(m_sOriginator)->LanguageID();
    m_oMailDoc = automation::CreateObject<MSXML2::DOMDocument>("MSXML2.DOMDOCUMENT");
    m_oMailDoc->loadXML("<MAIL/>");
    const MSXML2::NodePtr root = Root(m_oMailDoc);
    createNewChildNode(root, "CASEID", m_sCaseID);
    createNewChildNode(root, "PRODUCTCATEGORY",
                       GetProductCategory(automation::ToInt32(Column(m_rsQuestion, "Q_PRODUCTCAT"))));
    createNewChildNode(root, "ECPRODUCT",
                       GetECProductDesc(automation::ToInt32(Column(m_rsQuestion, "PRODUCTID"))));
    createNewChildNode(root, "FAQCATEGORIES",
                       GetQuestionCategory(automation::ToInt32(Column(m_rsQuestion, "Q_CATEGORY"))));
    createNewChildNode(root, "DESCRIPTION", Column(m_rsQuestion, "Q_DESC"));
    createNewChildNode(root, "QSTATUS", OrvaneUtilities::GetI18NText("LBLQX3658", language));
    createNewChildNode(root, "QSTATUS", Column(m_rsQuestion, "Q_STATUS"));
    formQAFlow();
  } catch (...) {
    OrvaneUtilities::ReportHandledError("OrvaneProcess.SolveOnNoResponse.formSRDetailsNodes");
  }
}

void SolveOnNoResponseJob::formCustomerDetailsNodes() {
  try {
    if (m_bProspect) {
      createNewChildNode(Root(m_oMailDoc), "CUSTOMER", automation::Variant::Null());
      const MSXML2::NodePtr customer = m_oMailDoc->selectSingleNode("//CUSTOMER");
      createNewChildNode(customer, "PROSPECT", automation::Variant::Null());
      createNewChildNode(customer, "EMAIL", m_sRecipient);
      const auto prospect =
          automation::CreateObject<OrvServiceRequest::Prospect>(OrvServiceRequest::kProspectProgId);
      createNewChildNode(customer, "CONTACTINFO", prospect->GetContactInfo(m_sRecipient));
      return;
    }
    const VnMembership::UserPtr user = KnownUser(m_sOriginator);
    m_lLanguageID = user->LanguageID();
    createNewChildNode(Root(m_oMailDoc), "CUSTOMER", automation::Variant::Null());
    const MSXML2::NodePtr customer = m_oMailDoc->selectSingleNode("//CUSTOMER");
    m_sRecipient = user->EMailAddress();
    createNewChildNode(customer, "REGISTERED", automation::Variant::Null());
    createNewChildNode(customer, "EMAIL", user->EMailAddress());
    createNewChildNode(customer, "FIRSTNAME", user->FirstName());
    createNewChildNode(customer, "LASTNAME", user->LastName());
    createNewChildNode(customer, "COMPANY", user->CompanyName());
    createNewChildNode(customer, "PHONE", user->PhoneNumber());
    createNewChildNode(customer, "MODEM", user->Modem());
    createNewChildNode(customer, "COUNTRY", user->Country());
    createNewChildNode(customer, "POSITION", user->Position());
    createNewChildNode(customer, "FAX", user->Fax());
  } catch (...) {
    OrvaneUtilities::ReportHandledError("OrvaneProcess.SolveOnNoResponse.formCustomerDetailsNodes");
  }
}

void SolveOnNoResponseJob::formInstalledBaseNodes() {
  try {
    createNewChildNode(Root(m_oMailDoc), "INSTALLEDBASE", automation::Variant::Null());
    const MSXML2::NodePtr base = m_oMailDoc->selectSingleNode("//INSTALLEDBASE");

    const automation::Variant site = Column(m_rsQuestion, "Q_SITE");
    createNewChildNode(base, "SITE", getSiteDescription(site));
    createNewChildNode(base, "SITE", site);

    if (m_lBackOfficeApplication == kProductGeneration) {
      const automation::Variant product = Column(m_rsQuestion, "Q_Product");
      createNewChildNode(base, "PRODUCT", getProductDescription(product));
      createNewChildNode(base, "PRODUCT", product);
    } else if (m_lBackOfficeApplication == kFirstObjectGeneration ||
               m_lBackOfficeApplication == kSecondObjectGeneration) {
      const automation::Variant object = Column(m_rsQuestion, "Q_OBJECT");
      createNewChildNode(base, "PRODUCT", getObjectDescription(object, Column(m_rsQuestion, "Q_OBJECTNR")));
      createNewChildNode(base, "PRODUCT", object);
    }

    const automation::Variant problem = Column(m_rsQuestion, "Q_REPORTED");
    createNewChildNode(base, "PROBLEMCODE", getReportedDescription(problem));
    createNewChildNode(base, "PROBLEMCODE", problem);

    const automation::Variant priority = Column(m_rsQuestion, "Q_PRIORITY");
    createNewChildNode(base, "PROBLEMPRIORITY", getPriorityDescription(automation::ToInt32(priority)));
    createNewChildNode(base, "PROBLEMPRIORITY", priority);

    createNewChildNode(base, "BPNO", Column(m_rsQuestion, "BP_NUMBER"));

    if (m_lBackOfficeApplication != 0) {
      const std::int32_t questionId = automation::ToInt32(m_sCaseID);
      // The sheets know these two by their place: the number comes before its description.
      if (const auto contract = GetContractAndDescription(questionId); !contract.IsEmpty()) {
        createNewChildNode(base, "CONTRACT", contract.code);
        createNewChildNode(base, "CONTRACT", contract.description);
      }
      if (const auto warranty = GetWarrantyAndDescription(questionId); !warranty.IsEmpty()) {
        createNewChildNode(base, "WARRANTY", warranty.code);
        createNewChildNode(base, "WARRANTY", warranty.description);
      }
    }
  } catch (...) {
    OrvaneUtilities::ReportHandledError("OrvaneProcess.SolveOnNoResponse.formInstalledBaseNodes");
  }
}

}  // namespace OrvaneProcess
