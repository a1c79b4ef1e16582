#include "bench/mail/mail_parts.hpp"

#include <stdexcept>

#include "bench/mail/mail_suite.hpp"
#include "components/interfaces/load_xsls.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/cdo/message.hpp"
#include "platform/msxml2/registration.hpp"
#include "suite/load_xsls/load_xsls.hpp"

namespace orvane_bench {
void RenderPages(const std::filesystem::path& sheet, int count) {
  automation::Runtime runtime;
  const automation::RuntimeScope scope(runtime);
  MSXML2::RegisterClasses(runtime.classes);
  OrvCommon::RegisterLoadXSLs(runtime.classes);
  const auto captions = Captions();
  const std::string text = MailDocument();
  for (int i = 0; i < count; ++i) {
    const auto document = automation::CreateObject<MSXML2::DOMDocument>("MSXML2.DOMDocument");
    document->loadXML(text);
    const auto processor = automation::CreateObject<OrvCommon::LoadXSLs>(OrvCommon::kLoadXSLsProgId)
                               ->LoadOrvaneTemplate(sheet.string(), "answer")
                               ->createProcessor();
    for (const auto& [label, caption] : captions) processor->addParameter(label, caption, "");
    processor->setInput(document);
    processor->transform();
    if (processor->output().size() < 1000) throw std::runtime_error("no page was rendered");
  }
}

void SendMails(const CDO::Settings& settings, const std::filesystem::path& page, int count) {
  automation::Runtime runtime;
  const automation::RuntimeScope scope(runtime);
  CDO::RegisterClasses(runtime.classes, settings);
  const std::string body = MailBody();
  for (int i = 0; i < count; ++i) {
    const auto message = automation::CreateObject<CDO::Message>("CDO.Message");
    message->setFrom("support@example.com");
    message->setTo("customer@example.org");
    message->setSubject("Reminder (100001) ");
    message->AddAttachment(page.string());
    message->setTextBody(body);
    message->send();
  }
}

}  // namespace orvane_bench
