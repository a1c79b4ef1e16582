// The parts of an XML document that job code touches: elements and attributes.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "platform/automation/export.hpp"
#include "platform/automation/object.hpp"

namespace MSXML2 {

enum class NodeType { Element = 1, Attribute = 2 };

class Node;
using NodePtr = std::shared_ptr<Node>;

class ORVANE_EXPORT NodeList : public automation::Object {
 public:
  virtual std::size_t length() const = 0;
  virtual NodePtr item(std::size_t index) const = 0;  // null past the end
};
using NodeListPtr = std::shared_ptr<NodeList>;

class ORVANE_EXPORT NamedNodeMap : public automation::Object {
 public:
  virtual NodePtr getNamedItem(std::string_view name) const = 0;  // null when there is none
  // At the end; an attribute of that name that is there already takes the new value in its place.
  virtual void setNamedItem(const NodePtr& attribute) = 0;
};
using NamedNodeMapPtr = std::shared_ptr<NamedNodeMap>;

// A Node keeps the content that it belongs to alive, beyond the document's own end.
class ORVANE_EXPORT Node : public automation::Object {
 public:
  virtual std::string nodeName() const = 0;

  // The value of an attribute; the text inside an element, at any depth. Setting it replaces the content by
  // one text; a character that XML cannot hold raises -2147467259 and changes nothing.
  virtual std::string text() const = 0;
  virtual void setText(std::string_view text) = 0;

  virtual NamedNodeMapPtr attributes() const = 0;  // null for an attribute
  virtual bool hasChildNodes() const = 0;          // elements or text; comments do not count

  // Appends an element at the end. One of this document is moved from where it is; one of another document is
  // copied. Returns the element where it is now.
  virtual NodePtr appendChild(const NodePtr& child) = 0;
};

}  // namespace MSXML2
