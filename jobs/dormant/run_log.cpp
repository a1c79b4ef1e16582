// The day's run log: OrvLog\OrvDormantUserExpirySvc_log_YYYY_M_D.txt beside the installation.
#include "common/run_log.hpp"

#include <string>

#include "common/text_helpers.hpp"
#include "components/interfaces/configuration.hpp"
#include "jobs/dormant/dormant_user_expiry.hpp"
#include "jobs/dormant/log_texts.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/scripting/file_system_object.hpp"

namespace OrvaneProcess {

void DormantUserExpiry::WriteJobLog(std::int16_t kind) {
  const std::string datePart = OrvaneUtilities::RunLogDatePart(automation::Now());
  const std::string timestamp = OrvaneUtilities::GetTimestampText();

  // Never through an object context: the log belongs to the host's run, whatever transaction surrounds it.
  const auto configuration = automation::CreateObject<Vantrel::Configuration>(Vantrel::kConfigurationProgId);
  const auto files = automation::CreateObject<Scripting::FileSystemObject>("Scripting.FileSystemObject");
  const std::string folder = files->GetParentFolderName(configuration->RootPath()) + "\\OrvLog";
  OrvaneUtilities::MakeRunLogFolder(*files, folder);
  if (kind != 1 && kind != 2) return;

  const std::string fileName = folder + "\\" + std::string(dormant_log::kFilePrefix) + datePart + ".txt";
  const Scripting::TextStreamPtr log = files->OpenTextFile(fileName, Scripting::IOMode::ForAppending, true);
  if (kind == 1) {
    log->WriteLine(OrvaneUtilities::RunLogRuler());
    log->WriteLine("Orvane NTService Log ");
    log->WriteLine(OrvaneUtilities::RunLogRuler());
    log->WriteLine(std::string(dormant_log::kStarted) + timestamp);
  } else {
    log->WriteLine(std::string(dormant_log::kStopped) + timestamp);
    log->WriteLine(OrvaneUtilities::RunLogRuler());
  }
  log->Close();
}

}  // namespace OrvaneProcess
