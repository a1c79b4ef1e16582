// What an XPath expression selects.
#pragma once

#include <string_view>

#include "platform/msxml2/libxml/tree.hpp"

namespace MSXML2::libxml {

NodePtr SelectSingleNode(Tree& tree, xmlNodePtr from, std::string_view expression);
NodeListPtr SelectNodes(Tree& tree, xmlNodePtr from, std::string_view expression);

}  // namespace MSXML2::libxml
