#include "bench/mail/mail_parts.hpp"

#include <fstream>
#include <stdexcept>

#include "components/interfaces/load_xsls.hpp"
#include "platform/cdo/message.hpp"
#include "platform/cdo/registration.hpp"
#include "platform/msxml2/registration.hpp"
#include "suite/load_xsls/load_xsls.hpp"

namespace orvane_bench {

MailParts::MailParts(const std::filesystem::path& home)
    : sheet_(SheetOf(home)), pageFile_(home / "Data" / "HTML" / "page.htm"), statements_(home) {
  MSXML2::RegisterClasses(runtime_.classes);
  OrvCommon::RegisterLoadXSLs(runtime_.classes);
  CDO::RegisterClasses(runtime_.classes,
                       {.sendUsing = CDO::SendUsing::Pickup, .pickupDirectory = PickupFolder(home).string()});
  page_ = Render();
}

std::string MailParts::Render() {
  const auto document = automation::CreateObject<MSXML2::DOMDocument>("MSXML2.DOMDocument");
  document->loadXML(document_);
  const auto processor = automation::CreateObject<OrvCommon::LoadXSLs>(OrvCommon::kLoadXSLsProgId)
                             ->LoadOrvaneTemplate(sheet_.string(), "answer")
                             ->createProcessor();
  for (const auto& [label, caption] : captions_) processor->addParameter(label, caption, "");
  processor->setInput(document);
  processor->transform();
  std::string page = processor->output();
  if (page.size() < 1000) throw std::runtime_error("no page was rendered");
  return page;
}

void MailParts::Send() {
  std::ofstream(pageFile_) << page_;
  const auto message = automation::CreateObject<CDO::Message>("CDO.Message");
  message->setFrom("support@example.com");
  message->setTo("customer@example.org");
  message->setSubject("Reminder (100001) ");
  message->AddAttachment(pageFile_.string());
  message->setTextBody(body_);
  message->send();
  std::filesystem::remove(pageFile_);
}

}  // namespace orvane_bench
