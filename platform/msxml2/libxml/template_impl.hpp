// "MSXML2.XSLTemplate" and its processors.
#pragma once

#include <map>
#include <string>
#include <string_view>

#include "platform/msxml2/libxml/budget.hpp"
#include "platform/msxml2/libxml/style_sheet.hpp"
#include "platform/msxml2/xsl_template.hpp"

namespace MSXML2::libxml {

class TemplateImpl final : public XSLTemplate {
 public:
  explicit TemplateImpl(const Limits& limits) : limits_(limits) {}

  void setStylesheet(const DOMDocumentPtr& document) override;
  XSLProcessorPtr createProcessor() override;

 private:
  Limits limits_;
  StyleSheetPtr sheet_;
};

class ProcessorImpl final : public XSLProcessor {
 public:
  ProcessorImpl(StyleSheetPtr sheet, const Limits& limits) : sheet_(std::move(sheet)), limits_(limits) {}

  void setInput(const DOMDocumentPtr& document) override;
  void addParameter(std::string_view name, std::string_view value, std::string_view namespaceUri) override;
  bool transform() override;
  std::string output() const override { return output_; }

 private:
  StyleSheetPtr sheet_;
  Limits limits_;
  DOMDocumentPtr input_;
  std::map<std::string, std::string> parameters_;  // by name, in the form "{namespace}name" with a namespace
  std::string output_;
};

}  // namespace MSXML2::libxml
