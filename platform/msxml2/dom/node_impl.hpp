// A handle of one element or attribute of a Tree.
#pragma once

#include <memory>
#include <pugixml.hpp>
#include <string>
#include <string_view>

#include "platform/msxml2/dom/tree.hpp"
#include "platform/msxml2/node.hpp"

namespace MSXML2::dom {

class NodeImpl;

// The attributes of one element; a part of the element's handle.
class AttributeMap final : public NamedNodeMap {
 public:
  explicit AttributeMap(const NodeImpl& owner) : owner_(owner) {}

  NodePtr getNamedItem(std::string_view name) const override;
  void setNamedItem(const NodePtr& attribute) override;

 private:
  const NodeImpl& owner_;
};

class NodeImpl final : public Node, public std::enable_shared_from_this<NodeImpl> {
 public:
  // An attribute is given with its element.
  NodeImpl(TreePtr tree, pugi::xml_node element, pugi::xml_attribute attribute = {})
      : tree_(std::move(tree)), element_(element), attribute_(attribute) {}

  std::string nodeName() const override { return attribute_ ? attribute_.name() : element_.name(); }
  std::string text() const override;
  void setText(std::string_view text) override;
  NamedNodeMapPtr attributes() const override;
  bool hasChildNodes() const override;
  NodePtr appendChild(const NodePtr& child) override;

 private:
  friend class AttributeMap;

  TreePtr tree_;
  pugi::xml_node element_;
  pugi::xml_attribute attribute_;  // null for an element
  mutable AttributeMap attributes_{*this};
};

}  // namespace MSXML2::dom
