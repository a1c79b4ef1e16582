// The attributes of one element.
#pragma once

#include <string_view>

#include "platform/msxml2/libxml/tree.hpp"

namespace MSXML2::libxml {

class NodeImpl;

class AttributeMap final : public NamedNodeMap {
 public:
  // A part of the handle of the element.
  explicit AttributeMap(const NodeImpl& owner) : owner_(owner) {}

  // By the name with its prefix.
  NodePtr getNamedItem(std::string_view name) const override;
  // At the end, or in place of the attribute that has the name already.
  void setNamedItem(const NodePtr& attribute) override;

 private:
  xmlAttrPtr Find(std::string_view name) const;

  const NodeImpl& owner_;
};

}  // namespace MSXML2::libxml
