#include "platform/msxml2/registration.hpp"

#include <libxml/parser.h>
#include <libxslt/xsltutils.h>

#include <memory>

#include "platform/msxml2/dom/document_impl.hpp"
#include "platform/msxml2/libxml/budget.hpp"
#include "platform/msxml2/libxml/messages.hpp"
#include "platform/msxml2/libxml/template_impl.hpp"

namespace MSXML2 {
void RegisterClasses(automation::ClassTable& classes, const Settings& settings) {
  libxml::WatchAllocations();
  xmlInitParser();
  // The library would print the stack of a sheet that recurses too deeply; what went wrong is raised.
  xsltSetGenericDebugFunc(nullptr, &libxml::IgnoreMessage);
  xsltSetGenericErrorFunc(nullptr, &libxml::IgnoreMessage);
  const auto context = std::make_shared<dom::DocumentContext>(settings.drives, settings.layer);
  context->saving = settings.saving;
  context->pending = settings.pending;
  classes.Register("MSXML2.DOMDocument", [context] { return std::make_shared<dom::DocumentImpl>(context); });
  const libxml::Limits limits{settings.transformationMemory, settings.transformationTime};
  classes.Register("MSXML2.XSLTemplate", [limits] { return std::make_shared<libxml::TemplateImpl>(limits); });
}

}  // namespace MSXML2
