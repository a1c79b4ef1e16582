#include "platform/msxml2/libxml/tree.hpp"

#include <libxml/parser.h>

#include <new>
#include <utility>

#include "platform/msxml2/libxml/document_impl.hpp"
#include "platform/msxml2/libxml/failure.hpp"
#include "platform/msxml2/libxml/node_impl.hpp"
#include "platform/msxml2/libxml/serializer.hpp"

namespace MSXML2::libxml {
namespace {

// Below this number of appended nodes a document is small enough to keep all of its nodes.
constexpr std::size_t kCollapseAfter = 4096;

bool MayHaveChildren(const xmlNode* node) {
  return node->type == XML_ELEMENT_NODE || node->type == XML_DOCUMENT_NODE ||
         node->type == XML_ATTRIBUTE_NODE;
}

// The node after `node` in document order within the tree below `top`; null at the end.
xmlNodePtr Next(xmlNodePtr node, const xmlNode* top, bool intoChildren = true) {
  if (intoChildren && MayHaveChildren(node) && node->children != nullptr) return node->children;
  while (node != top) {
    if (node->next != nullptr) return node->next;
    node = node->parent;
    if (node == nullptr) return nullptr;
  }
  return nullptr;
}

bool IsHeld(xmlNodePtr top) {
  for (xmlNodePtr node = top; node != nullptr; node = Next(node, top)) {
    if (node->_private != nullptr) return true;
    if (node->type != XML_ELEMENT_NODE) continue;
    for (const xmlAttr* attribute = node->properties; attribute != nullptr; attribute = attribute->next) {
      if (attribute->_private != nullptr) return true;
    }
  }
  return false;
}

bool IsNamed(const xmlNode* node, std::string_view name) {
  return node->type == XML_ELEMENT_NODE && node->ns == nullptr && Text(node->name) == name;
}

void Free(xmlNodePtr node) {
  if (node->type == XML_ATTRIBUTE_NODE) {
    xmlFreeProp(reinterpret_cast<xmlAttrPtr>(node));
  } else {
    xmlFreeNode(node);
  }
}

}  // namespace

TreePtr Tree::Empty() {
  Owned<xmlDoc> doc(xmlNewDoc(XmlChars("1.0")));
  if (!doc) throw std::bad_alloc();
  doc->standalone = -1;  // without an XML declaration
  doc->dict = xmlDictCreate();
  return std::make_shared<Tree>(std::move(doc));
}

NodePtr Tree::Wrap(xmlNodePtr node) {
  if (node == nullptr) return nullptr;
  if (node == Root()) {
    if (std::shared_ptr<DocumentImpl> document = document_.lock(); document && document->IsOn(*this))
      return document;
    std::shared_ptr<DocumentImpl> document = DocumentImpl::Over(shared_from_this());
    return document;
  }
  if (node->_private != nullptr) return static_cast<NodeImpl*>(node->_private)->shared_from_this();
  return std::make_shared<NodeImpl>(shared_from_this(), node);
}

void Tree::Release(xmlNodePtr node) {
  node->_private = nullptr;
  while (node->parent != nullptr) node = node->parent;
  if (node != Root()) FreeIfUnheld(node);
}

bool Tree::IsAttached(const xmlNode* node) const {
  while (node->parent != nullptr) node = node->parent;
  return node == Root();
}

void Tree::FreeIfUnheld(xmlNodePtr orphan) {
  if (!IsHeld(orphan)) Free(orphan);
}

NodePtr Tree::NewDraft(const TreePtr& self, NodeType type, std::string_view name) {
  if (!keepsDrafts_ || !mayCollapse_) return nullptr;
  if (type != NodeType::Element && (type != NodeType::Attribute || name == "xmlns")) return nullptr;
  const Name* const known = names_.Of(name);
  if (known == nullptr) return nullptr;
  return std::make_shared<NodeImpl>(self, type, *known);
}

// Not where an element without a prefix would be read back in another namespace than it has now.
bool Tree::KeepsMarkupIn(const xmlNode* parent) const {
  if (!mayCollapse_ || parent->type != XML_ELEMENT_NODE) return false;
  for (; parent->type == XML_ELEMENT_NODE; parent = parent->parent) {
    for (const xmlNs* ns = parent->nsDef; ns != nullptr; ns = ns->next) {
      if (ns->prefix == nullptr) return false;
    }
    if (parent->parent == nullptr) return false;
  }
  return parent == reinterpret_cast<const xmlNode*>(doc_.get());
}

bool Tree::AppendDraft(xmlNodePtr parent, const NodeImpl& child) {
  const Draft& draft = child.GetDraft();
  Settle();
  if (!KeepsMarkupIn(parent)) return false;
  const auto last = parent->last == nullptr ? markup_.end() : markup_.find(parent->last);
  const bool grows = last != markup_.end() && last->second.CanGrow();
  // The few elements that make up the frame of a document are looked for again and again.
  if (!grows && !draft.hasElements && draft.attributes.empty()) return false;
  xmlNodePtr placeholder = grows ? parent->last : nullptr;
  if (placeholder == nullptr) placeholder = AddPlaceholder(parent, {});
  Markup& markup = grows ? last->second : markup_.at(placeholder);
  Open open{&child, parent, placeholder, draft.MarkupSize()};
  try {
    draft.AppendMarkup(markup.RoomFor(open.size));
  } catch (...) {
    if (markup.IsEmpty()) RemovePlaceholder(placeholder);
    throw;
  }
  markup.AddNames(draft.elementNames);
  Touch();
  std::erase_if(firstByName_,
                [&](const auto& known) { return (names_.BitOf(known.first) & draft.elementNames) != 0; });
  open_ = open;
  return true;
}

void Tree::Settle() {
  if (open_.draft == nullptr) return;
  const xmlNodePtr node = open_.draft->BecomeNode();
  const Open open = std::exchange(open_, {});
  Markup& markup = markup_.at(open.placeholder);
  markup.TakeBack(open.size);
  if (markup.IsEmpty()) RemovePlaceholder(open.placeholder);
  Append(open.parent, node);
}

std::string Tree::TakeBuffer() {
  return buffersKept_ == 0 ? std::string() : std::move(buffers_[--buffersKept_]);
}

void Tree::ReturnBuffer(std::string&& buffer) {
  constexpr std::size_t kWorthKeeping = 64;
  constexpr std::size_t kTooLarge = std::size_t{1} << 16;
  if (buffer.capacity() < kWorthKeeping || buffer.capacity() > kTooLarge || buffersKept_ == buffers_.size())
    return;
  buffer.clear();
  buffers_[buffersKept_++] = std::move(buffer);
}

void Tree::DiscardChildren(xmlNodePtr node) {
  Settle();
  while (node->children != nullptr) {
    const xmlNodePtr child = node->children;
    Unlink(child);
    markup_.erase(child);
    FreeIfUnheld(child);
  }
}

void Tree::Unlink(xmlNodePtr node) {
  Settle();
  if (node->parent != nullptr && IsAttached(node)) {
    Touch();
    firstByName_.clear();
  }
  if (MayHaveChildren(node)) Expand(node);
  xmlUnlinkNode(node);
}

void Tree::Detach(xmlNodePtr node) {
  Settle();
  xmlNodePtr top = node->parent;
  while (top->parent != nullptr) top = top->parent;
  Unlink(node);
  if (top != Root()) FreeIfUnheld(top);
}

void Tree::Append(xmlNodePtr parent, xmlNodePtr child) {
  Settle();
  // Linked by hand: the library's own call would merge neighbouring texts and free the one that came last.
  child->parent = parent;
  child->prev = parent->last;
  child->next = nullptr;
  if (parent->last != nullptr) {
    parent->last->next = child;
  } else {
    parent->children = child;
  }
  parent->last = child;
  if (!IsAttached(parent)) return;
  Touch();
  ForgetNamesIn(child);
  if (child->prev != nullptr) MaybeCollapse(child->prev);
}

void Tree::Touch() {
  source_.reset();
}

void Tree::ForgetNamesIn(xmlNodePtr top) {
  for (xmlNodePtr node = top; node != nullptr; node = Next(node, top)) {
    ++appended_;
    if (node->type != XML_ELEMENT_NODE || firstByName_.empty()) continue;
    if (const auto known = firstByName_.find(Text(node->name)); known != firstByName_.end())
      firstByName_.erase(known);
  }
}

// The elements of a job's long runs (one per record) are finished once the next one is appended.
void Tree::MaybeCollapse(xmlNodePtr node) {
  if (!mayCollapse_ || appended_ < kCollapseAfter || node->type != XML_ELEMENT_NODE || IsHeld(node)) return;
  const auto before = node->prev == nullptr ? markup_.end() : markup_.find(node->prev);
  Markup started;
  Markup& markup = before != markup_.end() && before->second.CanGrow() ? before->second : started;
  for (xmlNodePtr inner = node; inner != nullptr; inner = Next(inner, node)) {
    if (MarkupOf(inner) != nullptr) return;  // holds markup already; its names are not at hand
    if (inner->type != XML_ELEMENT_NODE) continue;
    if (inner->ns != nullptr || inner->nsDef != nullptr)
      return;  // would need its surroundings to be read again
    if (const auto known = firstByName_.find(Text(inner->name)); known != firstByName_.end())
      firstByName_.erase(known);
  }
  for (xmlNodePtr inner = node; inner != nullptr; inner = Next(inner, node)) {
    if (inner->type == XML_ELEMENT_NODE) markup.AddName(reinterpret_cast<const char*>(inner->name));
  }
  markup.Append(Serialize(*this, node));
  if (&markup == &started) {
    const xmlNodePtr placeholder = xmlNewDocComment(Doc(), nullptr);
    if (placeholder == nullptr) throw std::bad_alloc();
    xmlAddPrevSibling(node, placeholder);
    markup_.emplace(placeholder, std::move(started));
  }
  xmlUnlinkNode(node);
  xmlFreeNode(node);
}

const Markup* Tree::MarkupOf(const xmlNode* node) const {
  if (node->type != XML_COMMENT_NODE) return nullptr;
  const auto found = markup_.find(node);
  return found == markup_.end() ? nullptr : &found->second;
}

xmlNodePtr Tree::AddPlaceholder(xmlNodePtr parent, Markup markup) {
  const xmlNodePtr placeholder = xmlNewDocComment(Doc(), nullptr);
  if (placeholder == nullptr) throw std::bad_alloc();
  xmlAddChild(parent, placeholder);
  markup_.emplace(placeholder, std::move(markup));
  return placeholder;
}

void Tree::RemovePlaceholder(xmlNodePtr placeholder) {
  markup_.erase(placeholder);
  xmlUnlinkNode(placeholder);
  xmlFreeNode(placeholder);
}

xmlNodePtr Tree::ExpandPlaceholder(xmlNodePtr placeholder) {
  const auto found = markup_.find(placeholder);
  // What had to be read back once may be asked for again and again; it stays as nodes from now on.
  if (found->second.CanGrow()) mayCollapse_ = false;
  xmlNodePtr first = nullptr;
  found->second.ForEachPiece([&](std::string_view piece) {
    constexpr int kOptions = XML_PARSE_NONET | XML_PARSE_NOENT | XML_PARSE_NOCDATA | XML_PARSE_NOERROR |
                             XML_PARSE_NOWARNING | XML_PARSE_HUGE;
    xmlNodePtr list = nullptr;
    const xmlParserErrors problem = xmlParseInNodeContext(placeholder->parent, piece.data(),
                                                          static_cast<int>(piece.size()), kOptions, &list);
    if (problem != XML_ERR_OK)
      Fail("The document could not be read again (" + std::to_string(problem) + ").");
    while (list != nullptr) {
      const xmlNodePtr node = list;
      list = list->next;
      // Linked by hand, as in Append.
      node->parent = placeholder->parent;
      node->prev = placeholder->prev;
      node->next = placeholder;
      (node->prev != nullptr ? node->prev->next : node->parent->children) = node;
      placeholder->prev = node;
      if (first == nullptr) first = node;
    }
  });
  const xmlNodePtr after = placeholder->next;
  RemovePlaceholder(placeholder);
  return first != nullptr ? first : after;
}

void Tree::Expand(xmlNodePtr top) {
  Settle();
  if (markup_.empty()) return;
  std::vector<xmlNodePtr> placeholders;
  for (xmlNodePtr node = top; node != nullptr; node = Next(node, top)) {
    if (MarkupOf(node) != nullptr) placeholders.push_back(node);
  }
  for (const xmlNodePtr placeholder : placeholders) ExpandPlaceholder(placeholder);
}

xmlNodePtr Tree::FirstElement(std::string_view name) {
  Settle();
  if (const auto known = firstByName_.find(name); known != firstByName_.end()) return known->second;
  const NameSet bit = names_.BitOf(name);
  for (xmlNodePtr node = Root(); node != nullptr;) {
    if (const Markup* markup = MarkupOf(node); markup != nullptr && markup->MayHold(name, bit)) {
      node = ExpandPlaceholder(node);
      continue;
    }
    if (IsNamed(node, name)) {
      firstByName_.emplace(name, node);
      return node;
    }
    node = Next(node, Root());
  }
  return nullptr;
}

std::vector<xmlNodePtr> Tree::Elements(std::string_view name) {
  Settle();
  std::vector<xmlNodePtr> result;
  const NameSet bit = names_.BitOf(name);
  for (xmlNodePtr node = Root(); node != nullptr;) {
    if (const Markup* markup = MarkupOf(node); markup != nullptr && markup->MayHold(name, bit)) {
      node = ExpandPlaceholder(node);
      continue;
    }
    if (IsNamed(node, name)) result.push_back(node);
    node = Next(node, Root());
  }
  return result;
}

}  // namespace MSXML2::libxml
