// What a run does outside itself, and what fails there, told to whoever listens. Jobs stay silent about some
// of it by their rules; they do not know that they are listened to.
#pragma once

#include <string>
#include <string_view>

#include "platform/automation/class_table.hpp"
#include "platform/automation/error.hpp"

namespace effects {

// Called on the thread of the job, in the middle of its work. Nothing may be raised.
class FailureListener {
 public:
  virtual ~FailureListener() = default;

  // A mail could not be made, given its attachment, or handed to the transport. `to` and `subject` are what
  // it had been given by then.
  virtual void MailRefused(std::string_view to, std::string_view subject,
                           const automation::Error& reason) noexcept = 0;
  // A folder could not be removed by the job itself.
  virtual void FolderNotDeleted(std::string_view path, const automation::Error& reason) noexcept = 0;
  // An entry was made in the error log, or should have been: one that could not be written counts as well.
  virtual void ErrorLogged(std::string_view errorSource, std::string_view message) noexcept = 0;
};

// Register "CDO.Message", "Scripting.FileSystemObject" and "Vantrel.Log" in `classes`: those of `real`,
// listened to. The listener must outlive the objects made by the table.
void RecordMails(automation::ClassTable& classes, const automation::ClassTable& real,
                 FailureListener& listener);
void RecordFolders(automation::ClassTable& classes, const automation::ClassTable& real,
                   FailureListener& listener);
void RecordErrors(automation::ClassTable& classes, const automation::ClassTable& real,
                  FailureListener& listener);

}  // namespace effects
