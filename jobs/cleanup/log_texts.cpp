#include "jobs/cleanup/log_texts.hpp"

#include <string>

#include "common/error_reporting.hpp"
#include "platform/automation/error.hpp"

namespace OrvaneProcess::clean_up_log {
namespace {

// What follows the source of an entry that the job makes of such an error.
std::string Ending(automation::ErrorNumber number) {
  const automation::Error error(number);
  return OrvaneUtilities::HandledErrorText({}, error, error.Description());
}

bool EndsAs(std::string_view entry, automation::ErrorNumber number) {
  return entry.ends_with(Ending(number));
}

}  // namespace

// No other step of the job raises 424.
bool IsAgeSweepsOwn(std::string_view entry) {
  const bool ofASweep =
      entry.starts_with("ORVProcess.cleanup.") || entry.starts_with("Orvprocess.cleanup.DeleteChatSession ");
  return ofASweep && EndsAs(entry, automation::ErrorNumber::ObjectRequired);
}

bool IsStuckAttachment(std::string_view entry) {
  return entry.starts_with("ORVProcess.cleanup.DeleteSRAttchmentsFilesWithotherstatus ") &&
         EndsAs(entry, automation::ErrorNumber::PathNotFound);
}

}  // namespace OrvaneProcess::clean_up_log
