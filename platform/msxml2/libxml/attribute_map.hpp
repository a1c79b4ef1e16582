// The attributes of one element.
#pragma once

#include <string_view>

#include "platform/msxml2/libxml/tree.hpp"

namespace MSXML2::libxml {

class AttributeMap final : public NamedNodeMap {
 public:
  // `owner` is the element's handle; it keeps the element where it is for as long as the map is held.
  AttributeMap(TreePtr tree, NodePtr owner, xmlNodePtr element)
      : tree_(std::move(tree)), owner_(std::move(owner)), element_(element) {}

  // By the name with its prefix.
  NodePtr getNamedItem(std::string_view name) const override;
  // At the end, or in place of the attribute that has the name already.
  void setNamedItem(const NodePtr& attribute) override;

 private:
  xmlAttrPtr Find(std::string_view name) const;

  TreePtr tree_;
  NodePtr owner_;
  xmlNodePtr element_;
};

}  // namespace MSXML2::libxml
