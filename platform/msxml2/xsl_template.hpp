// A prepared style sheet and one use of it: "MSXML2.XSLTemplate".
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/automation/export.hpp"
#include "platform/msxml2/dom_document.hpp"

namespace MSXML2 {

class ORVANE_EXPORT XSLProcessor : public automation::Object {
 public:
  virtual void setInput(const DOMDocumentPtr& document) = 0;
  // A string parameter of the style sheet; the value is text, whatever characters it holds.
  virtual void addParameter(std::string_view name, std::string_view value, std::string_view namespaceUri) = 0;
  // Runs the style sheet; raises with the processor's own message when it fails. A sheet can read no file,
  // reach no network and write nothing.
  virtual bool transform() = 0;
  virtual std::string output() const = 0;  // UTF-8
};
using XSLProcessorPtr = std::shared_ptr<XSLProcessor>;

class ORVANE_EXPORT XSLTemplate : public automation::Object {
 public:
  // Compiles the style sheet in `document`; raises with the reason when it is none.
  virtual void setStylesheet(const DOMDocumentPtr& document) = 0;
  virtual XSLProcessorPtr createProcessor() = 0;
};
using XSLTemplatePtr = std::shared_ptr<XSLTemplate>;

}  // namespace MSXML2
