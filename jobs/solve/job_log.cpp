// The run log of the job: a start banner and a stop line per run.
#include <string>

#include "common/connections.hpp"
#include "common/run_log.hpp"
#include "common/text_helpers.hpp"
#include "jobs/solve/log_texts.hpp"
#include "jobs/solve/solve_on_no_response.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/scripting/file_system_object.hpp"

namespace OrvaneProcess {

void SolveOnNoResponseJob::WriteRunLog(std::int16_t kind) {
  constexpr std::int16_t kStart = 1;
  constexpr std::int16_t kStop = 2;
  if (kind != kStart && kind != kStop) return;

  // The stop line goes by the folder that the start banner has asked for and made.
  if (kind == kStart) m_sRootPath = OrvaneUtilities::GetInstallDirectory();
  const auto files = automation::CreateObject<Scripting::FileSystemObject>("Scripting.FileSystemObject");
  const std::string folder = files->GetParentFolderName(m_sRootPath) + "\\OrvLog";
  if (kind == kStart) OrvaneUtilities::MakeRunLogFolder(*files, folder);

  const std::string path = folder + "\\" + std::string(solve_log::kFilePrefix) +
                           OrvaneUtilities::RunLogDatePart(automation::Now()) + ".txt";
  const Scripting::TextStreamPtr log = files->OpenTextFile(path, Scripting::IOMode::ForAppending, true);
  log->WriteLine(OrvaneUtilities::RunLogRuler());
  if (kind == kStart) {
    log->WriteLine("Orvane NTService Log ");
    log->WriteLine(OrvaneUtilities::RunLogRuler());
    log->WriteLine(std::string(solve_log::kStarted) + OrvaneUtilities::GetTimestampText());
  } else {
    log->WriteLine(std::string(solve_log::kStopped) + OrvaneUtilities::GetTimestampText());
    log->WriteLine(OrvaneUtilities::RunLogRuler());
  }
  log->Close();
}

}  // namespace OrvaneProcess
