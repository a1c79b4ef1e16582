// From a tree to markup. The same tree gives the same bytes everywhere: UTF-8, no indentation, elements
// without content as <a/>, an XML declaration only where the document was loaded with one. A carriage return
// is written as a reference, since a plain one would be read back as a line feed.
#pragma once

#include <libxml/tree.h>

#include <functional>
#include <string>
#include <string_view>

namespace MSXML2::libxml {

class Tree;
using Sink = std::function<void(std::string_view)>;

// One node with everything below it.
std::string Serialize(const Tree& tree, const xmlNode* node);

// The whole document, in pieces of moderate size.
void SerializeDocument(const Tree& tree, const Sink& sink);

}  // namespace MSXML2::libxml
