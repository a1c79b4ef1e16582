// Readable texts for codes, from the suite's components: contract and warranty, and the product catalogue.
#include <cstdint>
#include <string>

#include "common/error_reporting.hpp"
#include "components/interfaces/catalogue.hpp"
#include "components/interfaces/service_request.hpp"
#include "jobs/solve/solve_on_no_response.hpp"
#include "platform/automation/runtime.hpp"

namespace OrvaneProcess {

OrvServiceRequest::CodeAndDescription SolveOnNoResponseJob::GetContractAndDescription(
    std::int32_t questionId) {
  try {
    return automation::CreateObject<OrvServiceRequest::Question>(OrvServiceRequest::kQuestionProgId)
        ->GetContractAndDescription(questionId);
  } catch (...) {
    OrvaneUtilities::LogError("OrvaneProcess.SolveOnNoResponse.GetContractAndDescription");
    return {};
  }
}

OrvServiceRequest::CodeAndDescription SolveOnNoResponseJob::GetWarrantyAndDescription(
    std::int32_t questionId) {
  try {
    return automation::CreateObject<OrvServiceRequest::Question>(OrvServiceRequest::kQuestionProgId)
        ->GetWarrantyAndDescription(questionId);
  } catch (...) {
    OrvaneUtilities::LogError("OrvaneProcess.SolveOnNoResponse.GetWarrantyAndDescription");
    return {};
  }
}

std::string SolveOnNoResponseJob::GetProductCategory(std::int32_t categoryId) {
  if (categoryId == 0) return {};
  try {
    const ADODB::RecordsetPtr categories =
        automation::CreateObject<Catalogue::ProductCategory>(Catalogue::kProductCategoryClass)
            ->GetCategories({categoryId});
    std::string name = automation::ToTextOrEmpty(categories->Value("CATEGORYNAME"));
    categories->Close();
    return name;
  } catch (...) {
    OrvaneUtilities::LogError("OrvaneProcess.SolveOnNoResponse.GetProductCategory");
    return {};
  }
}

std::string SolveOnNoResponseJob::GetECProductDesc(std::int32_t i_lProductID) {
  if (i_lProductID == 0) return {};
  try {
    return automation::CreateObject<Catalogue::Product>(Catalogue::kProductClass)
        ->GetDescription(i_lProductID);
  } catch (...) {
    OrvaneUtilities::LogError("OrvaneProcess.SolveOnNoResponse.GetECProductDesc");
    return {};
  }
}

std::string SolveOnNoResponseJob::GetQuestionCategory(std::int32_t categoryId) {
  if (categoryId == 0) return {};
  try {
    const Scripting::DictionaryPtr categories =
        automation::CreateObject<Catalogue::FAQCategory>(Catalogue::kFAQCategoryClass)->GetCategories();
    return automation::ToTextOrEmpty(categories->Item(categoryId));
  } catch (...) {
    OrvaneUtilities::LogError("OrvaneProcess.SolveOnNoResponse.GetQuestionCategory");
    return {};
  }
}

}  // namespace OrvaneProcess
