// The objects through which jobs change files, mails and other systems, each behind one that reports to a
// recorder first and passes everything on.
//
// Each function registers in `classes` the classes of `real` that it names, wrapped; one that `real` does not
// have is left out, unless said otherwise. The recorder must outlive what the table makes.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "effects/recorder.hpp"
#include "platform/automation/class_table.hpp"

namespace effects {

// Where the files of a run lie.
struct Places {
  // The operating system's path of what stands under a path of the file-system object, in the disk's own
  // spelling; or of what is made there, which mostly is not there yet. Raises nothing: of a path that leads
  // nowhere it is as near to that as it can be.
  std::function<std::string(std::string_view path, bool isMade)> native;
  // What a change of the file or folder at such a path is counted under.
  std::function<std::string(const std::string& native)> folder;
  // Whether it is a run log or lies among them: writing those is no effect.
  std::function<bool(const std::string& native)> isLog;
};

// "Scripting.FileSystemObject", which `real` must have. Lines of run logs go to Recorder::RunLogLine.
void RecordFiles(automation::ClassTable& classes, const automation::ClassTable& real, Recorder& recorder,
                 const Places& places);

// "CDO.Message", whether `real` has it or not. A mail that fails before it is sent, because it takes no
// attachment or cannot even be made, is told as one that could not be sent, with the recipient and subject
// that it had been given by then.
void RecordMails(automation::ClassTable& classes, const automation::ClassTable& real, Recorder& recorder);

// "Vantrel.Log". An entry that could not be written counts as well.
void RecordErrors(automation::ClassTable& classes, const automation::ClassTable& real, Recorder& recorder);

// "OrvCommonMTS.FileHandling".
void RecordSharedFiles(automation::ClassTable& classes, const automation::ClassTable& real,
                       Recorder& recorder, const Places& places);

// The ERP's calls, the escalation, and what is told of concluded questions.
void RecordCalls(automation::ClassTable& classes, const automation::ClassTable& real, Recorder& recorder);

}  // namespace effects
