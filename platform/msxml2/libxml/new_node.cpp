#include "platform/msxml2/libxml/new_node.hpp"

#include <new>
#include <string>

#include "platform/msxml2/libxml/characters.hpp"
#include "platform/msxml2/libxml/failure.hpp"
#include "platform/msxml2/libxml/handles.hpp"
#include "platform/msxml2/libxml/names.hpp"

namespace MSXML2::libxml {
namespace {

xmlNodePtr Checked(xmlNodePtr node) {
  if (node == nullptr) throw std::bad_alloc();
  return node;
}

// A namespace for an attribute without an element: it is kept with the document until the attribute gets an
// element that declares it.
xmlNsPtr NamespaceOfDocument(xmlDocPtr doc, const xmlChar* prefix, const xmlChar* uri) {
  // The first of the document's own namespaces has to be that of the prefix "xml".
  xmlNsPtr last = xmlSearchNsByHref(doc, reinterpret_cast<xmlNodePtr>(doc), XML_XML_NAMESPACE);
  if (last == nullptr) throw std::bad_alloc();
  for (;; last = last->next) {
    if (Text(last->prefix) == Text(prefix) && Text(last->href) == Text(uri)) return last;
    if (last->next == nullptr) break;
  }
  last->next = xmlNewNs(nullptr, uri, prefix);
  if (last->next == nullptr) throw std::bad_alloc();
  return last->next;
}

}  // namespace

xmlNodePtr NewNode(xmlDocPtr doc, NodeType type, std::string_view name, std::string_view namespaceUri) {
  if (type == NodeType::Text) return Checked(xmlNewDocText(doc, XmlChars("")));
  if (type != NodeType::Element && type != NodeType::Attribute) {
    Fail("Only elements, attributes and texts can be created.");
  }
  if (type == NodeType::Element && namespaceUri.empty() && IsPlainName(name)) {
    const std::string local(name);
    return Checked(xmlNewDocNode(doc, nullptr, XmlChars(local.c_str()), nullptr));
  }
  RequireXmlName(name);
  RequireXmlText(namespaceUri, kDocumentSource);
  const std::size_t colon = name.find(':');
  const bool hasPrefix = colon != std::string_view::npos;
  if (hasPrefix && namespaceUri.empty()) Fail("The prefix of '" + std::string(name) + "' has no namespace.");
  const std::string prefix(hasPrefix ? name.substr(0, colon) : std::string_view());
  const std::string local(hasPrefix ? name.substr(colon + 1) : name);
  const std::string uri(namespaceUri);
  const xmlChar* prefixChars = hasPrefix ? XmlChars(prefix.c_str()) : nullptr;

  if (type == NodeType::Attribute) {
    if (local == "xmlns" || prefix == "xmlns") Fail("'" + std::string(name) + "' declares a namespace.");
    if (!hasPrefix && !uri.empty()) Fail("The attribute '" + local + "' in a namespace needs a prefix.");
    auto* attribute = xmlNewDocProp(doc, XmlChars(local.c_str()), nullptr);
    const xmlNodePtr node = Checked(reinterpret_cast<xmlNodePtr>(attribute));
    if (hasPrefix) attribute->ns = NamespaceOfDocument(doc, prefixChars, XmlChars(uri.c_str()));
    return node;
  }
  const xmlNodePtr element = Checked(xmlNewDocNode(doc, nullptr, XmlChars(local.c_str()), nullptr));
  if (uri.empty()) return element;
  element->ns = xmlNewNs(element, XmlChars(uri.c_str()), prefixChars);
  if (element->ns == nullptr) {
    xmlFreeNode(element);
    Fail("'" + uri + "' cannot be the namespace of '" + std::string(name) + "'.");
  }
  return element;
}

xmlNodePtr CopyAttribute(xmlDocPtr doc, const xmlAttr* attribute) {
  auto* copy = xmlNewDocProp(doc, attribute->name, nullptr);
  const xmlNodePtr node = Checked(reinterpret_cast<xmlNodePtr>(copy));
  if (attribute->ns != nullptr)
    copy->ns = NamespaceOfDocument(doc, attribute->ns->prefix, attribute->ns->href);
  const Owned<xmlChar> value(xmlNodeGetContent(reinterpret_cast<const xmlNode*>(attribute)));
  if (!value || Text(value.get()).empty()) return node;
  copy->children = copy->last = Checked(xmlNewDocText(doc, value.get()));
  copy->children->parent = node;
  return node;
}

}  // namespace MSXML2::libxml
