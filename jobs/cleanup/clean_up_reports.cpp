// What the clean-up job reports to operators: failures in the suite's error log, start and stop in its run
// log.
#include "common/connections.hpp"
#include "common/error_reporting.hpp"
#include "common/run_log.hpp"
#include "common/text_helpers.hpp"
#include "components/interfaces/configuration.hpp"
#include "jobs/cleanup/clean_up.hpp"
#include "jobs/cleanup/log_texts.hpp"
#include "platform/automation/error.hpp"
#include "platform/automation/runtime.hpp"

namespace OrvaneProcess {

// A log component that fails ends the job at the first error: nothing here stops that failure on its way out.
void CleanUp::ReportError(std::string_view source, const std::optional<std::string>& additionalInformation) {
  const automation::Error error = automation::PendingError();
  OrvaneUtilities::WriteToLog(error, OrvaneUtilities::HandledErrorText(source, error, additionalInformation));
}

void CleanUp::WriteJobLog(std::int16_t kind) {
  if (kind != 1 && kind != 2) return;

  const auto configuration = automation::CreateObject<Vantrel::Configuration>(Vantrel::kConfigurationProgId);
  const std::string folder = FileSystem().GetParentFolderName(configuration->RootPath()) + "\\OrvLog";
  OrvaneUtilities::MakeRunLogFolder(FileSystem(), folder);

  const std::string path = folder + "\\" + std::string(clean_up_log::kFilePrefix) +
                           OrvaneUtilities::RunLogDatePart(automation::Now()) + ".txt";
  const Scripting::TextStreamPtr log = FileSystem().OpenTextFile(path, Scripting::IOMode::ForAppending, true);
  if (kind == 1) {
    log->WriteLine(OrvaneUtilities::RunLogRuler());
    log->WriteLine("Orvane NTService Log ");
    log->WriteLine(OrvaneUtilities::RunLogRuler());
    log->WriteLine(std::string(clean_up_log::kStarted) + OrvaneUtilities::GetTimestampText());
  } else {
    log->WriteLine(std::string(clean_up_log::kStopped) + OrvaneUtilities::GetTimestampText());
    log->WriteLine(OrvaneUtilities::RunLogRuler());
  }
  log->Close();
}

}  // namespace OrvaneProcess
