// What the clean-up job tells its operators: failures in the suite's error log, start and stop in its run
// log.
#include "common/connections.hpp"
#include "common/error_reporting.hpp"
#include "common/run_log.hpp"
#include "common/text_helpers.hpp"
#include "components/interfaces/configuration.hpp"
#include "jobs/cleanup/clean_up.hpp"
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
  if (!FileSystem().FolderExists(folder)) FileSystem().CreateFolder(folder);

  const std::string path =
      folder + "\\OrvCleanUpSvc_log_" + OrvaneUtilities::RunLogDatePart(automation::Now()) + ".txt";
  const Scripting::TextStreamPtr log = FileSystem().OpenTextFile(path, Scripting::IOMode::ForAppending, true);
  if (kind == 1) {
    log->WriteLine(OrvaneUtilities::RunLogRuler());
    log->WriteLine("Orvane NTService Log ");
    log->WriteLine(OrvaneUtilities::RunLogRuler());
    log->WriteLine("Clean Up - NTService Started at : " + OrvaneUtilities::GetTimestampText());
  } else {
    log->WriteLine(" NTService Stopped at : " + OrvaneUtilities::GetTimestampText());
    log->WriteLine(OrvaneUtilities::RunLogRuler());
  }
  log->Close();
}

}  // namespace OrvaneProcess
