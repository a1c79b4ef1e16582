// Nodes that hang nowhere yet.
#pragma once

#include <libxml/tree.h>

#include <string_view>

#include "platform/msxml2/node.hpp"

namespace MSXML2::libxml {

// An element, attribute or text of `doc`; raises for other types, for a name that is none, and for a prefix
// without a namespace.
xmlNodePtr NewNode(xmlDocPtr doc, NodeType type, std::string_view name, std::string_view namespaceUri);

// A copy for `doc` of an attribute of any document.
xmlNodePtr CopyAttribute(xmlDocPtr doc, const xmlAttr* attribute);

}  // namespace MSXML2::libxml
