// One document's nodes, who holds them, and what of them is still (or again) plain markup.
//
// Ownership: a Tree lives as long as its document object or any node handed out. A node that hangs nowhere
// lives as long as somebody holds it or something below it. At most one handle (NodeImpl) exists for a node;
// the node's _private points to it.
//
// Size: nodes take many times the room of their markup. A large document is therefore kept as markup, except
// for its upper levels: a placeholder (a comment node known to the tree) stands for a run of child nodes, and
// is replaced by them when somebody needs to see them. Elements appended one after the other to a large
// document become markup again as soon as nobody holds them. In a document that was read from a file, which
// is there to be added to and saved, new elements are drafts (markup, see Draft) until they have to be nodes,
// and those with content of their own are appended as markup. The draft that was appended last may still be
// held; Settle makes nodes of it. Whoever walks nodes by himself calls Expand first, which settles as well.
#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/msxml2/libxml/handles.hpp"
#include "platform/msxml2/libxml/markup.hpp"
#include "platform/msxml2/libxml/names.hpp"
#include "platform/msxml2/node.hpp"

namespace MSXML2::libxml {

class DocumentImpl;
class NodeImpl;

class Tree : public std::enable_shared_from_this<Tree> {
 public:
  // An empty document.
  static std::shared_ptr<Tree> Empty();
  explicit Tree(Owned<xmlDoc> doc) : doc_(std::move(doc)), mayCollapse_(doc_->dict != nullptr) {}
  Tree(const Tree&) = delete;
  Tree& operator=(const Tree&) = delete;

  xmlDocPtr Doc() const { return doc_.get(); }
  xmlNodePtr Root() const { return reinterpret_cast<xmlNodePtr>(doc_.get()); }

  // The handle of a node of this tree, made when there is none; null for a null node.
  NodePtr Wrap(xmlNodePtr node);
  void SetDocumentObject(const std::shared_ptr<DocumentImpl>& document) { document_ = document; }
  // To be called by a handle that ends: frees what nobody can reach any more.
  void Release(xmlNodePtr node);

  bool IsAttached(const xmlNode* node) const;

  // Whether new elements and attributes are drafts; not before this was called.
  void KeepDrafts() { keepsDrafts_ = mayCollapse_ && Doc()->intSubset == nullptr; }
  // The handle of a new element or attribute that hangs nowhere; null when it has to be a node. `self` is
  // this tree.
  NodePtr NewDraft(const std::shared_ptr<Tree>& self, NodeType type, std::string_view name);
  // Makes `child`, a draft that hangs nowhere, the last child of `parent` without making nodes. False when it
  // has to be a node there.
  bool AppendDraft(xmlNodePtr parent, const NodeImpl& child);
  bool IsOpen(const NodeImpl& handle) const { return open_.draft == &handle; }
  // Makes nodes of the draft that was appended last, if somebody still holds it.
  void Settle();
  // To be called by the handle of a draft that ends as one.
  void Close(const NodeImpl& handle) {
    if (IsOpen(handle)) open_ = {};
  }
  // Buffers go from draft to draft.
  std::string TakeBuffer();
  void ReturnBuffer(std::string&& buffer);

  // Removes all children; those that somebody holds (or holds a part of) live on by themselves.
  void DiscardChildren(xmlNodePtr node);
  // Frees a node that hangs nowhere, unless somebody holds a part of it.
  void FreeIfUnheld(xmlNodePtr orphan);

  // Makes `child`, a node of this tree that hangs nowhere, the last child of `parent`.
  void Append(xmlNodePtr parent, xmlNodePtr child);
  // Takes a node out of where it hangs.
  void Unlink(xmlNodePtr node);
  // The same for a node that somebody holds: what it hung in is freed if it lived by this node alone.
  void Detach(xmlNodePtr node);

  // To be called before the document changes in any other way.
  void Touch();

  // Replaces every placeholder below `top`, or in the whole document, by its nodes.
  void Expand(xmlNodePtr top);
  void ExpandAll() { Expand(Root()); }

  // What the expression "//name" selects, a name without prefix: the first element, or all of them. A search
  // for the first is remembered until the document changes in a way that could change the answer.
  xmlNodePtr FirstElement(std::string_view name);
  std::vector<xmlNodePtr> Elements(std::string_view name);

  // Markup behind a placeholder; null for any other node.
  const Markup* MarkupOf(const xmlNode* node) const;
  xmlNodePtr AddPlaceholder(xmlNodePtr parent, Markup markup);

  // The bytes that the document was loaded from, as long as it has not been changed.
  void SetSource(std::shared_ptr<const std::string> source) { source_ = std::move(source); }
  const std::string* Source() const { return source_.get(); }

 private:
  // The draft that was appended last, as long as somebody holds it.
  struct Open {
    const NodeImpl* draft = nullptr;
    xmlNodePtr parent = nullptr;
    xmlNodePtr placeholder = nullptr;
    std::size_t size = 0;  // of its markup, the last of the placeholder's
  };

  bool KeepsMarkupIn(const xmlNode* parent) const;
  void RemovePlaceholder(xmlNodePtr placeholder);
  xmlNodePtr ExpandPlaceholder(xmlNodePtr placeholder);
  void ForgetNamesIn(xmlNodePtr top);
  void MaybeCollapse(xmlNodePtr node);

  Owned<xmlDoc> doc_;
  std::weak_ptr<DocumentImpl> document_;
  std::shared_ptr<const std::string> source_;
  std::unordered_map<const xmlNode*, Markup> markup_;
  std::map<std::string, xmlNodePtr, std::less<>> firstByName_;
  std::size_t appended_ = 0;  // nodes appended to the document so far
  Names names_;
  Open open_;
  std::array<std::string, 4> buffers_;
  std::size_t buffersKept_ = 0;
  bool keepsDrafts_ = false;
  bool mayCollapse_;  // markup tells names apart by address, which takes a document that keeps its names
};
using TreePtr = std::shared_ptr<Tree>;

}  // namespace MSXML2::libxml
