// What an XPath expression selects from a document.
#pragma once

#include <string_view>

#include "platform/msxml2/dom/tree.hpp"
#include "platform/msxml2/node.hpp"

namespace MSXML2::dom {

NodePtr SelectSingleNode(const TreePtr& tree, std::string_view expression);
NodeListPtr SelectNodes(const TreePtr& tree, std::string_view expression);

}  // namespace MSXML2::dom
