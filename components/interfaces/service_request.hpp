// The suite's components about service requests and the prospects who raise them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/adodb/recordset.hpp"
#include "platform/automation/export.hpp"
#include "platform/automation/object.hpp"

namespace OrvServiceRequest {

inline constexpr std::string_view kQuestionProgId = "OrvServiceRequest.Question";
inline constexpr std::string_view kProspectProgId = "OrvServiceRequest.Prospect";
// Components that are created by class; the table knows them by their interface identifiers.
inline constexpr std::string_view kProspectStateClass = "{358D4659-648D-403F-8807-B3C2A7F9BFD4}";
inline constexpr std::string_view kQuestionStateClass = "{79AC3288-D049-4571-B8E0-58D199F42F54}";

// What a contract or warranty lookup answers: the code and its description, both empty when there is none.
struct ORVANE_EXPORT CodeAndDescription {
  std::string code;
  std::string description;
  bool IsEmpty() const { return code.empty() && description.empty(); }
};

class ORVANE_EXPORT Question : public automation::Object {
 public:
  virtual CodeAndDescription GetContractAndDescription(std::int32_t questionId) = 0;
  virtual CodeAndDescription GetWarrantyAndDescription(std::int32_t questionId) = 0;
};

class ORVANE_EXPORT Prospect : public automation::Object {
 public:
  // How the prospect with this mail address can be reached, as one text.
  virtual std::string GetContactInfo(std::string_view emailAddress) = 0;
};

// Notified when a prospect's question was concluded.
class ORVANE_EXPORT ProspectState : public automation::Object {
 public:
  virtual void QuestionConcluded(std::string_view emailAddress, std::string_view comment, bool concluded) = 0;
};

// Notified when a question was concluded.
class ORVANE_EXPORT QuestionState : public automation::Object {
 public:
  virtual void Concluded(std::int32_t questionId) = 0;
};

}  // namespace OrvServiceRequest
