// An XML document: "MSXML2.DOMDocument".
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/msxml2/node.hpp"

namespace MSXML2 {

class DOMDocument : public Node {
 public:
  // Replaces the content. False when the text is not well-formed or the file cannot be read:
  // parseErrorReason() then says where and why, and the document is empty. No network, no external entities;
  // a document whose entities grow beyond all measure is refused.
  virtual bool load(std::string_view path) = 0;
  virtual bool loadXML(std::string_view text) = 0;
  virtual std::string parseErrorReason() const = 0;

  // Replaces the file in one step: written beside it, synced, renamed. Raises 70, 76, 61 and leaves the file
  // as it was when that fails. Paths are those of Scripting.FileSystemObject.
  virtual void save(std::string_view path) = 0;
  virtual std::string xml() const = 0;  // the document as text

  virtual NodePtr documentElement() const = 0;  // null for an empty document

  // A node that hangs nowhere yet; an element or attribute in the given namespace (empty: none).
  virtual NodePtr createNode(NodeType type, std::string_view name, std::string_view namespaceUri) = 0;

  // "SelectionLanguage" takes "XPath", the language in force anyway; other names are kept without effect.
  virtual void setProperty(std::string_view name, std::string_view value) = 0;
};
using DOMDocumentPtr = std::shared_ptr<DOMDocument>;

}  // namespace MSXML2
