// Sends the escalation mails of the suite: "OrvaneProcessMTS.SolveOnNoResponse".
#pragma once

#include <string_view>

#include "platform/automation/export.hpp"
#include "platform/automation/object.hpp"

namespace OrvaneProcessMTS {

inline constexpr std::string_view kSolveOnNoResponseProgId = "OrvaneProcessMTS.SolveOnNoResponse";

class ORVANE_EXPORT SolveOnNoResponse : public automation::Object {
 public:
  virtual void SendingEscalationMails() = 0;
};

}  // namespace OrvaneProcessMTS
