#include "platform/msxml2/libxml/template_impl.hpp"

#include <libxslt/security.h>
#include <libxslt/transform.h>
#include <libxslt/variables.h>
#include <libxslt/xsltutils.h>

#include <memory>
#include <new>

#include "platform/msxml2/dom/characters.hpp"
#include "platform/msxml2/failure.hpp"
#include "platform/msxml2/libxml/messages.hpp"
#include "platform/msxml2/libxml/parse.hpp"

namespace MSXML2::libxml {
namespace {

// A mail takes some thousand steps. These bounds stop an endless sheet within seconds.
constexpr unsigned long kMostTemplateSteps = 2'000'000;
constexpr unsigned long kMostPathSteps = 200'000'000;
constexpr int kDeepestTemplate = 1000;

constexpr char kFailed[] = "The transformation failed.";

struct ContextFreer {
  void operator()(xsltTransformContext* context) const { xsltFreeTransformContext(context); }
  void operator()(xsltSecurityPrefs* preferences) const { xsltFreeSecurityPrefs(preferences); }
};

void ForbidEverything(xsltSecurityPrefs* preferences) {
  for (const xsltSecurityOption option :
       {XSLT_SECPREF_READ_FILE, XSLT_SECPREF_WRITE_FILE, XSLT_SECPREF_CREATE_DIRECTORY,
        XSLT_SECPREF_READ_NETWORK, XSLT_SECPREF_WRITE_NETWORK}) {
    xsltSetSecurityPrefs(preferences, option, xsltSecurityForbid);
  }
}

const DOMDocument& Required(const DOMDocumentPtr& document) {
  if (!document) throw automation::Error(automation::ErrorNumber::ObjectRequired, kTemplateSource);
  return *document;
}

}  // namespace

void TemplateImpl::setStylesheet(const DOMDocumentPtr& document) {
  sheet_ = Compile(Required(document));
}

XSLProcessorPtr TemplateImpl::createProcessor() {
  if (!sheet_) throw automation::Error(automation::ErrorNumber::ObjectNotSet, kTemplateSource);
  return std::make_shared<ProcessorImpl>(sheet_, limits_);
}

void ProcessorImpl::setInput(const DOMDocumentPtr& document) {
  Required(document);
  input_ = document;
}

void ProcessorImpl::addParameter(std::string_view name, std::string_view value,
                                 std::string_view namespaceUri) {
  dom::RequireXmlText(name, kTemplateSource);
  dom::RequireXmlText(value, kTemplateSource);
  dom::RequireXmlText(namespaceUri, kTemplateSource);
  std::string key = namespaceUri.empty() ? std::string() : "{" + std::string(namespaceUri) + "}";
  key += name;
  parameters_[key] = value;
}

bool ProcessorImpl::transform() {
  if (!input_) throw automation::Error(automation::ErrorNumber::ObjectNotSet, kTemplateSource);
  output_.clear();
  // A transformation numbers its input's nodes and may strip spaces from it, so it gets a tree of its own.
  const Parsed input = Parse(input_->xml(), Encoding::Utf8);
  if (!input.doc) Fail(input.reason, kTemplateSource);
  const std::unique_ptr<xsltSecurityPrefs, ContextFreer> preferences(xsltNewSecurityPrefs());
  const std::unique_ptr<xsltTransformContext, ContextFreer> context(
      xsltNewTransformContext(sheet_.get(), input.doc.get()));
  if (!preferences || !context) throw std::bad_alloc();
  ForbidEverything(preferences.get());
  std::string messages;
  xsltSetCtxtSecurityPrefs(preferences.get(), context.get());
  xsltSetTransformErrorFunc(context.get(), &messages, &CollectMessage);
  context->maxTemplateDepth = kDeepestTemplate;
  context->opLimit = kMostTemplateSteps;
  context->xpathCtxt->opLimit = kMostPathSteps;
  for (const auto& [name, value] : parameters_) {
    if (xsltQuoteOneUserParam(context.get(), XmlChars(name.c_str()), XmlChars(value.c_str())) != 0) {
      Fail("The parameter '" + name + "' cannot be set: " + Collected(messages, kFailed), kTemplateSource);
    }
  }
  const Budget budget(limits_, *context);
  const Owned<xmlDoc> result(
      xsltApplyStylesheetUser(sheet_.get(), input.doc.get(), nullptr, nullptr, nullptr, context.get()));
  if (!budget.Exceeded().empty()) Fail(budget.Exceeded(), kTemplateSource);
  if (!result || context->state != XSLT_STATE_OK) Fail(Collected(messages, kFailed), kTemplateSource);
  xmlChar* text = nullptr;
  int length = 0;
  const int saved = xsltSaveResultToString(&text, &length, result.get(), sheet_.get());
  const Owned<xmlChar> owned(text);
  if (!budget.Exceeded().empty()) Fail(budget.Exceeded(), kTemplateSource);
  if (saved != 0) Fail("The result cannot be written as text.", kTemplateSource);
  output_.assign(reinterpret_cast<const char*>(text), text == nullptr ? 0 : static_cast<std::size_t>(length));
  return true;
}

}  // namespace MSXML2::libxml
