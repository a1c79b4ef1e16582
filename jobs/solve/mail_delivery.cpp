// A finished mail goes to the transport.
#include "jobs/solve/solve_on_no_response.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/cdo/message.hpp"
#include "platform/scripting/file_system_object.hpp"

namespace OrvaneProcess {

void SolveOnNoResponseJob::sendActualMail() {
  try {
    auto message = automation::CreateObject<CDO::Message>("CDO.Message");
    message->setFrom(m_sFrom);
    message->setTo(m_sRecipient);
    message->setSubject(m_sSubject);
    message->setMimeFormatted(true);
    if (m_bHTMLMail) message->AddAttachment(m_sHTMLFilePath);
    message->setTextBody(m_sGreeting + ",\r\n\r\n" + m_sBody);
    message->send();
    message.reset();
    if (m_bHTMLMail) {
      automation::CreateObject<Scripting::FileSystemObject>("Scripting.FileSystemObject")
          ->DeleteFile(m_sHTMLFilePath, true);
    }
  } catch (...) {
    // Silent by design: a mail that cannot be sent holds up nothing. Its page stays where it is.
  }
}

}  // namespace OrvaneProcess
