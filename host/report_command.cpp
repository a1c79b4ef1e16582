// "report": what the journals say of the runs.
#include <string>
#include <system_error>

#include "host/commands.hpp"
#include "host/report/recorded_run.hpp"
#include "platform/base/file_replacement.hpp"
#include "run/exit_codes.hpp"
#include "suite/composition/suite_home.hpp"

namespace orvane::host {
namespace {

void WritePage(const std::string& file, const std::string& page) {
  base::FileReplacement replacement(file);
  replacement.Write(page);
  replacement.Commit(base::FileReplacement::Durability::Content);
}

}  // namespace

int ReportRuns(const Arguments& arguments, const Console& console) {
  const SuiteHome home(arguments.home);
  std::error_code failed;
  if (!std::filesystem::is_directory(home.Path(), failed)) {
    console.err << "orvane-host: " << home.Path().string() << ": no such directory\n";
    return kConfiguration;
  }
  const std::vector<RecordedRun> runs = ReadRuns(home.Journals(), arguments.runs);
  if (arguments.json) {
    console.out << ReportJson(runs);
  } else if (arguments.html) {
    try {
      WritePage(*arguments.html, ReportHtml(runs, home.Path().string()));
    } catch (const std::system_error& error) {
      console.err << "orvane-host: " << *arguments.html << ": " << error.code().message() << '\n';
      return kUnfinished;
    }
  } else if (runs.empty()) {
    console.out << "No run has left a journal in " << home.Journals().string() << ".\n";
  } else {
    console.out << ReportText(FailuresFirst(runs), !arguments.runs.empty());
  }
  return kOk;
}

}  // namespace orvane::host
