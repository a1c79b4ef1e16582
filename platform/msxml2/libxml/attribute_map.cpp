#include "platform/msxml2/libxml/attribute_map.hpp"

#include <string>

#include "platform/automation/error.hpp"
#include "platform/msxml2/libxml/failure.hpp"
#include "platform/msxml2/libxml/new_node.hpp"
#include "platform/msxml2/libxml/node_impl.hpp"

namespace MSXML2::libxml {
namespace {

bool IsNamed(const xmlAttr* attribute, std::string_view name) {
  if (attribute->ns != nullptr && attribute->ns->prefix != nullptr) {
    const std::string_view prefix = Text(attribute->ns->prefix);
    if (name.substr(0, prefix.size()) != prefix || name.substr(prefix.size(), 1) != ":") return false;
    name.remove_prefix(prefix.size() + 1);
  }
  return Text(attribute->name) == name;
}

// The namespace as it can be used on `element`, declared there if need be.
xmlNsPtr DeclaredOn(xmlDocPtr doc, xmlNodePtr element, const xmlNs& wanted) {
  const xmlNsPtr inScope = xmlSearchNs(doc, element, wanted.prefix);
  if (inScope != nullptr && xmlStrEqual(inScope->href, wanted.href) != 0) return inScope;
  const xmlNsPtr declared = xmlNewNs(element, wanted.href, wanted.prefix);
  if (declared == nullptr)
    Fail("The prefix '" + std::string(Text(wanted.prefix)) + "' has another meaning there.");
  return declared;
}

}  // namespace

xmlAttrPtr AttributeMap::Find(std::string_view name) const {
  for (xmlAttrPtr attribute = owner_.GetNode()->properties; attribute != nullptr;
       attribute = attribute->next) {
    if (IsNamed(attribute, name)) return attribute;
  }
  return nullptr;
}

NodePtr AttributeMap::getNamedItem(std::string_view name) const {
  return owner_.GetTree()->Wrap(reinterpret_cast<xmlNodePtr>(Find(name)));
}

void AttributeMap::setNamedItem(const NodePtr& attribute) {
  if (!attribute) throw automation::Error(automation::ErrorNumber::ObjectRequired, kDocumentSource);
  const NodeImpl* const given = AsNodeImpl(*attribute);
  if (given == nullptr || given->nodeType() != NodeType::Attribute) {
    Fail("'" + attribute->nodeName() + "' is no attribute.");
  }
  if (owner_.TakeDraft(*given)) return;
  Tree& tree = *owner_.GetTree();
  const xmlNodePtr element = owner_.GetNode();
  auto* node = reinterpret_cast<xmlAttrPtr>(given->GetNode());
  if (given->GetTree().get() != &tree) {
    node = reinterpret_cast<xmlAttrPtr>(CopyAttribute(tree.Doc(), node));
  } else if (node->parent == element) {
    return;
  } else if (node->parent != nullptr) {
    Fail("The attribute '" + attribute->nodeName() + "' belongs to another element.");
  }
  if (tree.IsAttached(element)) tree.Touch();
  if (node->ns != nullptr) node->ns = DeclaredOn(tree.Doc(), element, *node->ns);
  const xmlAttrPtr old = Find(given->nodeName());
  // Linked by hand: the library's own call would free the attribute that is replaced, though somebody may
  // hold it.
  node->parent = element;
  if (old != nullptr) {
    node->prev = old->prev;
    node->next = old->next;
    old->parent = nullptr;
    old->prev = old->next = nullptr;
  } else {
    node->prev = nullptr;
    for (xmlAttrPtr last = element->properties; last != nullptr; last = last->next) node->prev = last;
    node->next = nullptr;
  }
  (node->prev != nullptr ? node->prev->next : element->properties) = node;
  if (node->next != nullptr) node->next->prev = node;
  if (old != nullptr) tree.FreeIfUnheld(reinterpret_cast<xmlNodePtr>(old));
}

}  // namespace MSXML2::libxml
