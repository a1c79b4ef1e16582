#include "platform/msxml2/libxml/node_impl.hpp"

#include <libxml/valid.h>

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

#include "platform/automation/error.hpp"
#include "platform/msxml2/libxml/characters.hpp"
#include "platform/msxml2/libxml/escaping.hpp"
#include "platform/msxml2/libxml/failure.hpp"
#include "platform/msxml2/libxml/new_node.hpp"
#include "platform/msxml2/libxml/selection.hpp"

namespace MSXML2::libxml {
namespace {

// A larger text is not worth being copied from level to level.
constexpr std::size_t kLargestTextOfDraft = std::size_t{8} << 20;

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

const TreeNode* AsTreeNode(const Node& node) {
  if (const NodeImpl* const own = AsNodeImpl(node)) return own;
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

NodeImpl::NodeImpl(TreePtr tree, NodeType type, const Name& name) : tree_(std::move(tree)) {
  draft_.name = &name;
  draft_.type = type;
  if (type == NodeType::Element) draft_.elementNames = name.bit;
}

NodeImpl::~NodeImpl() {
  if (node_ == nullptr && below_ != nullptr) RequireNode();  // the part lives on in it
  if (node_ != nullptr) {
    tree_->Release(node_);
    return;
  }
  if (above_ != nullptr) above_->below_ = nullptr;
  tree_->Close(*this);
  tree_->ReturnBuffer(std::move(draft_.content));
}

void NodeImpl::RequireNode() const {
  const NodeImpl* top = this;
  while (top->above_ != nullptr) top = top->above_;
  if (tree_->IsOpen(*top)) {
    tree_->Settle();
  } else {
    top->BecomeNode();
  }
}

xmlNodePtr NodeImpl::BecomeNode() const {
  const xmlNodePtr top = MakeNode(tree_->Doc(), draft_);
  xmlNodePtr node = top;
  for (const NodeImpl* handle = this; handle != nullptr;) {
    handle->node_ = node;
    node->_private = const_cast<NodeImpl*>(handle);
    const NodeImpl* const part = std::exchange(handle->below_, nullptr);
    if (part != nullptr && part->draft_.type == NodeType::Attribute) {
      xmlAttrPtr last = node->properties;
      while (last->next != nullptr) last = last->next;
      node = reinterpret_cast<xmlNodePtr>(last);
    } else {
      node = node->last;
    }
    handle->above_ = nullptr;
    handle->draft_ = {};
    handle = part;
  }
  return top;
}

// Both have to be as they are for good, but for what is added to this one.
bool NodeImpl::MayTake(const NodeImpl& part) const {
  if (part.tree_ != tree_ || !IsLooseDraft() || !part.IsLooseDraft()) return false;
  if (draft_.type != NodeType::Element || below_ != nullptr || &part == this) return false;
  return draft_.attributes.size() + draft_.content.size() + part.draft_.MarkupSize() <= Draft::kLargest;
}

bool NodeImpl::TakeDraft(const NodeImpl& part) const {
  if (!MayTake(part)) return false;
  const Draft& added = part.draft_;
  if (added.type == NodeType::Attribute) {
    if (!added.name->hasOwnBit || (draft_.attributeNames & added.name->bit) != 0) return false;
    added.AppendMarkup(draft_.attributes);
    draft_.attributeNames |= added.name->bit;
  } else {
    if (added.height >= Draft::kDeepest) return false;
    if (draft_.content.empty()) draft_.content = tree_->TakeBuffer();
    added.AppendMarkup(draft_.content);
    draft_.elementNames |= added.elementNames;
    draft_.height = std::max(draft_.height, added.height + 1);
    draft_.hasElements = true;
  }
  below_ = &part;
  part.above_ = this;
  return true;
}

NodeType NodeImpl::nodeType() const {
  if (node_ == nullptr) return draft_.type;
  if (node_->type == XML_ELEMENT_NODE) return NodeType::Element;
  if (node_->type == XML_ATTRIBUTE_NODE) return NodeType::Attribute;
  return NodeType::Text;
}

std::string NodeImpl::nodeName() const {
  if (node_ == nullptr) return std::string(draft_.name->text);
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
  return TextOf(*tree_, GetNode());
}

void NodeImpl::setText(std::string_view text) {
  const bool holdsMarkup = RequireXmlText(text, kDocumentSource);
  if (text.size() > static_cast<std::size_t>(std::numeric_limits<int>::max()))
    Fail("The text is larger than 2 GiB.");
  if (IsLooseDraft() && below_ == nullptr && text.size() <= kLargestTextOfDraft) {
    SetDraftText(text, holdsMarkup);
    return;
  }
  SetNodeText(GetNode(), text);
}

void NodeImpl::SetDraftText(std::string_view text, bool holdsMarkup) {
  constexpr std::size_t kShort = 15;  // what needs no memory of its own
  std::string& content = draft_.content;
  content.clear();
  if (text.size() > kShort && content.capacity() <= kShort) content = tree_->TakeBuffer();
  if (holdsMarkup) {
    AppendEscaped(content, text, draft_.type == NodeType::Attribute ? Place::Attribute : Place::Content);
  } else {
    content.append(text);
  }
  draft_.hasElements = false;
  draft_.height = 1;
  if (draft_.type == NodeType::Element) draft_.elementNames = draft_.name->bit;
}

void NodeImpl::SetNodeText(xmlNodePtr node, std::string_view text) {
  const auto length = static_cast<int>(text.size());
  const xmlChar* chars = reinterpret_cast<const xmlChar*>(text.data());
  if (tree_->IsAttached(node)) tree_->Touch();
  if (IsText(node)) {
    xmlNodeSetContentLen(node, chars, length);
    return;
  }
  if (node->type == XML_ATTRIBUTE_NODE) {
    // The library finds elements by an xml:id through a table that knows the old value.
    auto* attribute = reinterpret_cast<xmlAttrPtr>(node);
    if (attribute->atype == XML_ATTRIBUTE_ID) xmlRemoveID(tree_->Doc(), attribute);
  }
  tree_->DiscardChildren(node);
  if (text.empty()) return;
  const xmlNodePtr content = xmlNewDocTextLen(tree_->Doc(), chars, length);
  if (content == nullptr) throw std::bad_alloc();
  content->parent = node;
  node->children = node->last = content;
}

NamedNodeMapPtr NodeImpl::attributes() const {
  if (nodeType() != NodeType::Element) return nullptr;
  // A part of the handle, which thereby keeps the element where it is for as long as the map is held.
  return {std::const_pointer_cast<NodeImpl>(shared_from_this()), &attributes_};
}

NodePtr NodeImpl::parentNode() const {
  if (nodeType() == NodeType::Attribute) return nullptr;
  return tree_->Wrap(GetNode()->parent);
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
  return FirstChildOf(*tree_, GetNode());
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
  if (nodeType() != NodeType::Element) Fail("'" + nodeName() + "' cannot have children.");
  const NodeImpl* const part = child ? AsNodeImpl(*child) : nullptr;
  if (part != nullptr && part->node_ == nullptr && part->draft_.type == NodeType::Element) {
    if (node_ == nullptr && TakeDraft(*part)) return child;
    if (node_ != nullptr && part->tree_ == tree_ && part->IsLooseDraft() && tree_->AppendDraft(node_, *part))
      return child;
  }
  return AppendTo(*tree_, GetNode(), child);
}

NodePtr NodeImpl::cloneNode(bool deep) const {
  const xmlNodePtr node = GetNode();
  if (node->type == XML_ELEMENT_NODE) tree_->Expand(node);
  xmlNodePtr copy = nullptr;
  if (node->type == XML_ATTRIBUTE_NODE) {
    copy = CopyAttribute(tree_->Doc(), reinterpret_cast<const xmlAttr*>(node));
  } else {
    constexpr int kDeep = 1;
    constexpr int kWithAttributesOnly = 2;
    copy = xmlDocCopyNode(node, tree_->Doc(), deep ? kDeep : kWithAttributesOnly);
  }
  if (copy == nullptr) throw std::bad_alloc();
  return tree_->Wrap(copy);
}

NodePtr NodeImpl::selectSingleNode(std::string_view expression) const {
  return SelectSingleNode(*tree_, GetNode(), expression);
}

NodeListPtr NodeImpl::selectNodes(std::string_view expression) const {
  return SelectNodes(*tree_, GetNode(), expression);
}

}  // namespace MSXML2::libxml
