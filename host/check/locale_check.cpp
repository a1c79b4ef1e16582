#include "host/check/locale_check.hpp"

#include "common/text_helpers.hpp"
#include "platform/automation/error.hpp"
#include "platform/automation/runtime.hpp"

namespace orvane::host {

void CheckLocale(const std::string& name, Findings& findings) {
  const std::string where = "locale \"" + name + "\"";
  const automation::DateTime now = automation::Now().WithoutFraction();
  const std::string text = OrvaneUtilities::GetTimestampText();
  try {
    const automation::DateTime read = automation::CurrentLocale().ParseDateTime(text);
    // The text was taken a moment later.
    if (read >= now && read <= automation::AddMinutes(now, 1)) {
      findings.Note("locale.dates", where, "dates are written as " + text);
      return;
    }
    findings.Fail("locale.dates", where, "reads its own date " + text + " as another one",
                  "set LC_ALL to another locale");
  } catch (const automation::Error& error) {
    findings.Fail("locale.dates", where, "does not read its own date " + text + ": " + error.Description(),
                  "set LC_ALL to another locale");
  }
}

}  // namespace orvane::host
