// A service host: one process for each job, as a service manager starts it.
//
//   service-host HOME JOB SECONDS     runs the job now, and again SECONDS after each run has ended
//   service-host HOME JOB once        runs it once, and exits as the run did
//
// It stops by SIGTERM: at once between two runs; in a run at the job's next safe point, where nothing is left
// half done. The archive job is called by its work method, so that its files name this service; the job that
// reminds customers by its own, where BACKEND is set in the environment to the generation of the ERP.
#include <cstdlib>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include "components/interfaces/job.hpp"
#include "platform/automation/runtime.hpp"
#include "run/run_job.hpp"
#include "service_log.hpp"
#include "stop_request.hpp"

namespace {

void CallArchive(const automation::ObjectPtr& job) {
  automation::As<OrvaneProcess::ArchiveService>(job)->archiveQuestions("Service", "by the service host");
}

orvane::RunOptions OptionsOf(const char* home, const std::string& job, const StopRequest& stop) {
  orvane::RunOptions options;
  options.home = home;
  options.job = job;
  options.caller = "service-host";
  options.classes.Register(Vantrel::kLogProgId, [] { return std::make_shared<ServiceLog>(); });
  if (job == "OrvaneProcess.Archive") options.call = &CallArchive;
  if (const char* const backend = std::getenv("BACKEND");
      job == "OrvaneProcess.SolveOnNoResponse" && backend) {
    options.call = [generation = std::atoi(backend)](const automation::ObjectPtr& object) {
      automation::As<OrvaneProcess::SolveOnNoResponseService>(object)->SolveOnNoResponse(generation);
    };
  }
  options.stop = [&stop] { return stop.WasMade(); };
  // The job cannot be left in its middle, so the process ends there; having been asked to is no failure.
  options.leave = [&stop](int exitCode) {
    const bool wasAskedTo = exitCode == orvane::kTryAgain && stop.WasMade();
    std::_Exit(wasAskedTo ? EXIT_SUCCESS : exitCode);
  };
  options.tell = [](orvane::MessageKind kind, std::string_view text) {
    std::cerr << (kind == orvane::MessageKind::Warning ? "<4>" : "<6>") << text << std::endl;
  };
  return options;
}

}  // namespace

int main(int count, char** words) {
  if (count != 4) {
    std::cerr << "service-host HOME JOB (SECONDS | once)\n";
    return orvane::kUsage;
  }
  const StopRequest stop;
  const orvane::RunOptions options = OptionsOf(words[1], words[2], stop);
  if (std::string(words[3]) == "once") return orvane::RunJob(options);
  const std::chrono::seconds pause(std::strtoul(words[3], nullptr, 10));
  do {
    const int exitCode = orvane::RunJob(options);
    // What somebody has to mend first is not tried again and again; everything else may be better next time.
    if (exitCode == orvane::kUsage || exitCode == orvane::kConfiguration || exitCode == orvane::kLimit) {
      return exitCode;
    }
  } while (!stop.Wait(pause));
  return EXIT_SUCCESS;
}
