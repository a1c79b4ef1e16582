// From the bytes of a document to its tree.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/msxml2/libxml/handles.hpp"

namespace MSXML2::libxml {

// Elements may lie this deep inside each other; deeper ones would exhaust the stack of whoever walks the
// tree.
inline constexpr int kDeepestElement = 1000;

// The library counts bytes in an int.
inline constexpr std::size_t kLargestDocument = 0x7FFFFFFF;

std::string TooDeepReason();
std::string PlaceAndMessage(const xmlError& error);

struct Parsed {
  Owned<xmlDoc> doc;   // null when the text is no well-formed document
  std::string reason;  // why, with line and column
};

// Reads a document. `encoding` overrides what the document says of itself; null leaves it to the document.
// Nothing outside the text is read: external entities and subsets count as undeclared. Text of any size is
// taken; a document that declares entities of its own is read under the library's limits against expansion
// instead.
Parsed Parse(std::string_view text, const char* encoding);

}  // namespace MSXML2::libxml
