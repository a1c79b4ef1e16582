// The suite's components as the solve job meets them, each remembering what it was asked.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "components/interfaces/service_request.hpp"
#include "platform/automation/class_table.hpp"
#include "platform/automation/variant.hpp"

namespace orvane_test {

struct SentMail {
  std::string from;
  std::string to;
  std::string subject;
  bool mimeFormatted = false;
  std::string textBody;
  std::vector<std::pair<std::string, std::string>> attachments;  // path, content
  std::vector<std::string> members;                              // as they were used
};

struct SheetUse {
  std::string path;
  std::string purpose;
  std::vector<std::pair<std::string, std::string>> parameters;
  std::string document;  // the input as XML
};

// The world around one test. Steps that leave a trace elsewhere are also noted in `events`, in order.
struct SuiteDoubles {
  std::vector<SentMail> mails;
  std::vector<SheetUse> sheets;
  std::vector<std::string> events;
  std::vector<std::pair<std::string, std::vector<std::pair<std::string, automation::Variant>>>> erpCalls;
  std::map<std::int32_t, OrvServiceRequest::CodeAndDescription> contracts;
  std::map<std::int32_t, OrvServiceRequest::CodeAndDescription> warranties;
  std::map<std::int32_t, std::string> products;
  std::map<std::int32_t, automation::Variant> faqCategories;

  // What the page is; by default its document as it stands.
  std::function<std::string(const SheetUse&)> render;
  // Called with the name of a step ("send", "transform", "UpdateCall", ...) before it is taken; what it
  // raises is what the step raises.
  std::function<void(const std::string& step)> before;

  void Before(const std::string& step) const {
    if (before) before(step);
  }
};

// Registers CDO.Message, OrvCommon.LoadXSLs, the ERP, escalation, service-request and catalogue components.
void RegisterSuiteDoubles(automation::ClassTable& classes, const std::shared_ptr<SuiteDoubles>& doubles);

// Registers CDO.Message and the catalogue alone.
void RegisterMailDouble(automation::ClassTable& classes, const std::shared_ptr<SuiteDoubles>& doubles);
void RegisterCatalogueDoubles(automation::ClassTable& classes, const std::shared_ptr<SuiteDoubles>& doubles);

}  // namespace orvane_test
