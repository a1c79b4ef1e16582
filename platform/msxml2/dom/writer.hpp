// From a tree to markup. The same tree gives the same bytes everywhere: UTF-8, no indentation, elements
// without content as <a/>, an XML declaration only where the document was loaded with one. A carriage return
// is written as a reference, since a plain one would be read back as a line feed; so are tabs and line feeds
// of an attribute, which would be read back as spaces.
#pragma once

#include <functional>
#include <string_view>

#include "platform/msxml2/dom/tree.hpp"

namespace MSXML2::dom {

// The document's content, in pieces of moderate size. Raises where elements are nested deeper than they could
// be loaded again.
void Write(Tree& tree, const std::function<void(std::string_view)>& sink);

}  // namespace MSXML2::dom
