// A pass over a document that makes no nodes: is it well-formed, and which parts of it can stay markup?
#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace MSXML2::libxml {

// The content of one element right below the document's element, without the element's own tags.
struct Cut {
  std::size_t child = 0;  // which of the elements below the document's element, from 0
  std::size_t begin = 0;  // offsets in the text
  std::size_t end = 0;
  std::set<std::string, std::less<>> names;  // local names of the elements inside
};

struct Outline {
  // False for documents whose parts mean something else when they are read by themselves, or whose offsets
  // cannot be told: with a document type, in another encoding than UTF-8. Nothing is said of them then.
  bool usable = false;
  bool wellFormed = false;
  std::string reason;     // why it is not well-formed, with line and column
  std::vector<Cut> cuts;  // in order; elements with little or no content are not cut
};

Outline ReadOutline(std::string_view text);

}  // namespace MSXML2::libxml
