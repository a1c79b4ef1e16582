#include "platform/msxml2/libxml/node_impl.hpp"

#include <libxml/valid.h>

#include <limits>
#include <new>
#include <typeinfo>

#include "platform/automation/error.hpp"
#include "platform/msxml2/libxml/attribute_map.hpp"
#include "platform/msxml2/libxml/characters.hpp"
#include "platform/msxml2/libxml/failure.hpp"
#include "platform/msxml2/libxml/new_node.hpp"
#include "platform/msxml2/libxml/selection.hpp"

namespace MSXML2::libxml {
namespace {

bool IsText(const xmlNode* node) {
  return node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE;
}

bool IsInside(const xmlNode* node, const xmlNode* top) {
  for (; node != nullptr; node = node->parent) {
    if (node == top) return true;
  }
  return false;
}

// A copy of another document's node for this one.
xmlNodePtr Imported(Tree& tree, Tree& from, xmlNodePtr node) {
  from.Expand(node);
  const xmlNodePtr copy = xmlDocCopyNode(node, tree.Doc(), 1);
  if (copy == nullptr) throw std::bad_alloc();
  return copy;
}

// Most are of the one class, which is told fastest by its name.
const TreeNode* AsTreeNode(const Node& node) {
  if (typeid(node) == typeid(NodeImpl)) return static_cast<const NodeImpl*>(&node);
  return dynamic_cast<const TreeNode*>(&node);
}

void RequirePlaceInDocument(const xmlNode* document, const xmlNode* child) {
  if (IsText(child)) Fail("Text cannot stand outside the document's element.");
  for (const xmlNode* other = document->children; other != nullptr; other = other->next) {
    if (other->type == XML_ELEMENT_NODE && other != child) {
      Fail("Only one top level element is allowed in an XML document.");
    }
  }
}

}  // namespace

NodeImpl::NodeImpl(TreePtr tree, xmlNodePtr node) : tree_(std::move(tree)), node_(node) {
  node_->_private = this;
}

NodeImpl::~NodeImpl() {
  tree_->Release(node_);
}

NodeType NodeImpl::nodeType() const {
  if (node_->type == XML_ELEMENT_NODE) return NodeType::Element;
  if (node_->type == XML_ATTRIBUTE_NODE) return NodeType::Attribute;
  return NodeType::Text;
}

std::string NodeImpl::nodeName() const {
  if (IsText(node_)) return "#text";
  std::string name(Text(node_->name));
  if (node_->ns != nullptr && node_->ns->prefix != nullptr)
    name = std::string(Text(node_->ns->prefix)) + ":" + name;
  return name;
}

std::string TextOf(Tree& tree, xmlNodePtr node) {
  if (node->type == XML_ELEMENT_NODE || node->type == XML_DOCUMENT_NODE) tree.Expand(node);
  const Owned<xmlChar> content(xmlNodeGetContent(node));
  return std::string(Text(content.get()));
}

std::string NodeImpl::text() const {
  return TextOf(*tree_, node_);
}

void NodeImpl::setText(std::string_view text) {
  RequireXmlText(text, kDocumentSource);
  if (text.size() > static_cast<std::size_t>(std::numeric_limits<int>::max()))
    Fail("The text is larger than 2 GiB.");
  const auto length = static_cast<int>(text.size());
  const xmlChar* chars = reinterpret_cast<const xmlChar*>(text.data());
  if (tree_->IsAttached(node_)) tree_->Touch();
  if (IsText(node_)) {
    xmlNodeSetContentLen(node_, chars, length);
    return;
  }
  if (node_->type == XML_ATTRIBUTE_NODE) {
    // The library finds elements by an xml:id through a table that knows the old value.
    auto* attribute = reinterpret_cast<xmlAttrPtr>(node_);
    if (attribute->atype == XML_ATTRIBUTE_ID) xmlRemoveID(tree_->Doc(), attribute);
  }
  tree_->DiscardChildren(node_);
  if (text.empty()) return;
  const xmlNodePtr content = xmlNewDocTextLen(tree_->Doc(), chars, length);
  if (content == nullptr) throw std::bad_alloc();
  content->parent = node_;
  node_->children = node_->last = content;
}

NamedNodeMapPtr NodeImpl::attributes() const {
  if (node_->type != XML_ELEMENT_NODE) return nullptr;
  return std::make_shared<AttributeMap>(tree_, tree_->Wrap(node_), node_);
}

NodePtr NodeImpl::parentNode() const {
  if (node_->type == XML_ATTRIBUTE_NODE) return nullptr;
  return tree_->Wrap(node_->parent);
}

NodePtr FirstChildOf(Tree& tree, xmlNodePtr node) {
  if (node->type != XML_ELEMENT_NODE && node->type != XML_DOCUMENT_NODE) return nullptr;
  if (node->children != nullptr && tree.MarkupOf(node->children) != nullptr) tree.Expand(node);
  for (xmlNodePtr child = node->children; child != nullptr; child = child->next) {
    if (child->type == XML_ELEMENT_NODE || IsText(child)) return tree.Wrap(child);
  }
  return nullptr;
}

NodePtr NodeImpl::firstChild() const {
  return FirstChildOf(*tree_, node_);
}

NodePtr AppendTo(Tree& tree, xmlNodePtr parent, const NodePtr& child) {
  if (!child) throw automation::Error(automation::ErrorNumber::ObjectRequired, kDocumentSource);
  const TreeNode* const given = AsTreeNode(*child);
  if (given == nullptr) throw automation::Error(automation::ErrorNumber::TypeMismatch, kDocumentSource);
  xmlNodePtr node = given->GetNode();
  if (node->type != XML_ELEMENT_NODE && !IsText(node)) {
    Fail("A node of this type cannot be the child of another: '" + child->nodeName() + "'.");
  }
  if (parent->type == XML_DOCUMENT_NODE) RequirePlaceInDocument(parent, node);
  if (Tree& from = *given->GetTree(); &from != &tree) {
    node = Imported(tree, from, node);
    // Held before it is appended, so that it is not collapsed under the caller's hands.
    NodePtr result = tree.Wrap(node);
    tree.Append(parent, node);
    return result;
  }
  if (IsInside(parent, node)) Fail("A node cannot be appended to itself or to a node inside it.");
  const bool hungElsewhere = node->parent != nullptr;
  if (hungElsewhere) tree.Detach(node);
  tree.Append(parent, node);
  if (hungElsewhere) xmlReconciliateNs(tree.Doc(), node);  // its namespaces may be declared where it was
  return child;
}

NodePtr NodeImpl::appendChild(const NodePtr& child) {
  if (node_->type != XML_ELEMENT_NODE) Fail("'" + nodeName() + "' cannot have children.");
  return AppendTo(*tree_, node_, child);
}

NodePtr NodeImpl::cloneNode(bool deep) const {
  if (node_->type == XML_ELEMENT_NODE) tree_->Expand(node_);
  xmlNodePtr copy = nullptr;
  if (node_->type == XML_ATTRIBUTE_NODE) {
    copy = CopyAttribute(tree_->Doc(), reinterpret_cast<const xmlAttr*>(node_));
  } else {
    constexpr int kDeep = 1;
    constexpr int kWithAttributesOnly = 2;
    copy = xmlDocCopyNode(node_, tree_->Doc(), deep ? kDeep : kWithAttributesOnly);
  }
  if (copy == nullptr) throw std::bad_alloc();
  return tree_->Wrap(copy);
}

NodePtr NodeImpl::selectSingleNode(std::string_view expression) const {
  return SelectSingleNode(*tree_, node_, expression);
}

NodeListPtr NodeImpl::selectNodes(std::string_view expression) const {
  return SelectNodes(*tree_, node_, expression);
}

}  // namespace MSXML2::libxml
