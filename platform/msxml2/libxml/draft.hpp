// An element or attribute as markup, before (and mostly instead of) being a node: most of what a job builds
// is appended, let go and written to a file, without anybody looking at it again.
#pragma once

#include <libxml/tree.h>

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/msxml2/libxml/names.hpp"
#include "platform/msxml2/node.hpp"

namespace MSXML2::libxml {

struct Draft {
  // Above it, or below too many others, an element becomes a node: markup is copied from level to level.
  static constexpr std::size_t kLargest = std::size_t{64} << 20;
  static constexpr int kDeepest = 32;

  const Name* name = nullptr;
  NodeType type = NodeType::Element;
  bool hasElements = false;
  int height = 1;              // levels of elements
  NameSet elementNames = 0;    // of the element and those inside it
  NameSet attributeNames = 0;  // of its own attributes
  std::string attributes;      // as they stand in the tag, each with a blank before it
  std::string content;         // of an attribute its value

  // The whole element, or the attribute with a blank before it.
  void AppendMarkup(std::string& out) const;
  std::size_t MarkupSize() const;
};

// The node that a draft stands for; it hangs nowhere.
xmlNodePtr MakeNode(xmlDocPtr doc, const Draft& draft);

}  // namespace MSXML2::libxml
