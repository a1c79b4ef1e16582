// What libxml2 says of a text: whether it is a well-formed document of XML 1.0, and its tree.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/msxml2/libxml/handles.hpp"

namespace MSXML2::libxml {

enum class Encoding {
  Declared,  // as the document says of itself
  Utf8,      // whatever it says
};

struct Parsed {
  Owned<xmlDoc> doc;   // null when the text is no well-formed document
  std::string reason;  // why, with line and column
};

// Elements may be nested this deep; deeper ones would exhaust the stack of whoever walks the tree.
inline constexpr int kDeepestElement = 1000;
std::string TooDeep();  // the reason

// Reads a document. Nothing outside the text is read: external entities and subsets count as undeclared. Text
// of any size is taken; a document that declares entities of its own is read under the library's limits
// against expansion instead.
Parsed Parse(std::string_view text, Encoding encoding);

struct Checked {
  bool wellFormed = false;
  std::string reason;  // why not, with line and column
  // The same document in UTF-8 and with its entities replaced, unless that is how it is written anyway.
  std::optional<std::string> converted;
};

// The same without a tree, in a fraction of the memory.
Checked Check(std::string_view text, Encoding encoding);

}  // namespace MSXML2::libxml
