// The parts of an XML document that job code touches.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "platform/automation/object.hpp"

namespace MSXML2 {

enum class NodeType { Element = 1, Attribute = 2, Text = 3, Document = 9 };

class Node;
using NodePtr = std::shared_ptr<Node>;

class NodeList : public automation::Object {
 public:
  virtual std::size_t length() const = 0;
  virtual NodePtr item(std::size_t index) const = 0;  // null past the end
};
using NodeListPtr = std::shared_ptr<NodeList>;

class NamedNodeMap : public automation::Object {
 public:
  virtual NodePtr getNamedItem(std::string_view name) const = 0;  // null when there is none
  virtual void setNamedItem(const NodePtr& attribute) = 0;
};
using NamedNodeMapPtr = std::shared_ptr<NamedNodeMap>;

// A Node keeps its document alive.
class Node : public automation::Object {
 public:
  virtual NodeType nodeType() const = 0;
  virtual std::string nodeName() const = 0;

  // The text of the node and everything below it. Setting it replaces the content by one text; a character
  // that XML cannot hold raises -2147467259 and changes nothing.
  virtual std::string text() const = 0;
  virtual void setText(std::string_view text) = 0;

  virtual NamedNodeMapPtr attributes() const = 0;
  virtual NodePtr parentNode() const = 0;  // null for a node that hangs nowhere
  virtual NodePtr firstChild() const = 0;  // null when there is none

  // Appends at the end, moving the node from where it hung; a node of another document is copied in.
  // Returns the node as it now hangs.
  virtual NodePtr appendChild(const NodePtr& child) = 0;
  virtual NodePtr cloneNode(bool deep) const = 0;

  // The first node, or all nodes in document order, that the XPath expression selects from here.
  virtual NodePtr selectSingleNode(std::string_view expression) const = 0;  // null when there is none
  virtual NodeListPtr selectNodes(std::string_view expression) const = 0;
};

}  // namespace MSXML2
