// Loads the suite's style sheets: "OrvCommon.LoadXSLs".
#pragma once

#include <memory>
#include <string_view>

#include "platform/automation/export.hpp"
#include "platform/automation/object.hpp"
#include "platform/msxml2/xsl_template.hpp"

namespace OrvCommon {

inline constexpr std::string_view kLoadXSLsProgId = "OrvCommon.LoadXSLs";

class ORVANE_EXPORT LoadXSLs : public automation::Object {
 public:
  // The style sheet at `path`, ready to make processors; `purpose` is "answer" for mails. Raises, naming the
  // file, when it is missing or no style sheet.
  virtual MSXML2::XSLTemplatePtr LoadOrvaneTemplate(std::string_view path, std::string_view purpose) = 0;
};
using LoadXSLsPtr = std::shared_ptr<LoadXSLs>;

}  // namespace OrvCommon
