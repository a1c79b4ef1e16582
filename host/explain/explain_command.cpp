// "explain": what a job would do with one customer, request or file, and why.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <string>

#include "effects/journal_line.hpp"
#include "host/commands.hpp"
#include "host/explain/explain_report.hpp"
#include "host/explain/explanation.hpp"
#include "host/explain/subject.hpp"
#include "host/preview_call.hpp"
#include "platform/adodb/session/connection_string.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/base/text.hpp"
#include "platform/scripting/local/path_resolver.hpp"
#include "run/exit_codes.hpp"
#include "run/preview_run.hpp"
#include "suite/composition/composition.hpp"
#include "suite/composition/data_folder.hpp"
#include "suite/composition/site_settings.hpp"

namespace orvane::host {
namespace {

const OrvaneProcess::JobNeeds& NeedsOf(const JobInfo& job) {
  const auto all = OrvaneProcess::NeedsOfJobs();
  return *std::find_if(all.begin(), all.end(),
                       [&job](const OrvaneProcess::JobNeeds& needs) { return needs.progId == job.progId; });
}

// By the preview's own session: the rows as the job will find them, and no second copy of a database.
Subject FindSubject(const std::string& key, const PreviewCall& call) {
  automation::Runtime runtime;
  RegisterSuite(runtime, call.home, call.site, {.world = &call.world.Parts()});
  const automation::RuntimeScope scope(runtime);
  using ADODB::engine::ConnectionString;
  ConnectionString text = ConnectionString::Parse(call.site.Connection("Orvane", "Orvane"));
  const auto& provider = ADODB::engine::ProviderOf(call.world.Parts().providers, text);
  Subject subject = FindRows(key, NeedsOf(*call.jobs.front()), *provider->Connect(text));
  try {
    const Scripting::local::PathResolver resolver(Drives(call.site), call.world.Parts().layer);
    subject.files = FindFiles(key, resolver.PlaceFor(DataFolder(call.home.Path())).path);
  } catch (const automation::Error& error) {
    subject.notLookedInto.push_back("the data folder: " + error.Description());
  }
  return subject;
}

int Explain(const Arguments& arguments, const Console& console, const PreviewCall& call) {
  const JobInfo& job = *call.jobs.front();
  const Subject subject = FindSubject(arguments.key, call);
  if (subject.IsUnknown()) {
    console.err << "orvane-host: " << base::WithControlsShown(arguments.key)
                << ": no customer, request or file by this name or number in what " << job.progId
                << " works on\n";
    for (const std::string& table : subject.notLookedInto) {
      console.err << "orvane-host: not looked into: " << base::WithControlsShown(table) << '\n';
    }
    return kUsage;
  }
  Explanation explanation(subject);
  const auto begin = std::chrono::system_clock::now();
  const PreviewedJob previewed = PreviewJob(call.home, call.site, job, call.world,
                                            {.options = call.options,
                                             .at = arguments.at,
                                             .listener = &explanation,
                                             .watches = true,
                                             .reads = &explanation});
  console.out << (arguments.json ? ExplanationJson(explanation, previewed,
                                                   effects::RunName(begin, getpid(), ClassName(job)))
                                 : ExplanationText(explanation, previewed));
  console.out.flush();
  return previewed.finished ? kOk : kUnfinished;
}

}  // namespace

int ExplainJob(const Arguments& arguments, const Console& console) {
  return LookAtRun(arguments, console,
                   [&](const PreviewCall& call) { return Explain(arguments, console, call); });
}

}  // namespace orvane::host
