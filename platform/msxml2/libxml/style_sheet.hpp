// A compiled style sheet.
#pragma once

#include <libxslt/xsltInternals.h>

#include <memory>

#include "platform/msxml2/dom_document.hpp"

namespace MSXML2::libxml {

using StyleSheetPtr = std::shared_ptr<xsltStylesheet>;

// Compiles the style sheet that `document` holds; the document stays as it is. Raises with the compiler's
// message. xsl:include takes style sheets from the document's own folder and from nowhere else; xsl:import is
// refused.
StyleSheetPtr Compile(const DOMDocument& document);

}  // namespace MSXML2::libxml
