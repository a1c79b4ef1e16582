// A handle of one node of a Tree.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <typeinfo>

#include "platform/msxml2/libxml/attribute_map.hpp"
#include "platform/msxml2/libxml/draft.hpp"
#include "platform/msxml2/libxml/tree.hpp"
#include "platform/msxml2/node.hpp"

namespace MSXML2::libxml {

// What a node of this implementation can tell its fellows, the document object included.
class TreeNode {
 public:
  virtual ~TreeNode() = default;
  virtual const TreePtr& GetTree() const = 0;
  virtual xmlNodePtr GetNode() const = 0;
};

// A handle starts with its node, or with a draft and gets a node when it needs one. A draft that was put into
// another one stands in the other's markup; as long as somebody holds it, it is the other's open part, the
// last thing in there, and neither of them changes without becoming a node first. A draft has one open part
// at most, which may have one itself.
class NodeImpl final : public Node, public TreeNode, public std::enable_shared_from_this<NodeImpl> {
 public:
  NodeImpl(TreePtr tree, xmlNodePtr node);
  NodeImpl(TreePtr tree, NodeType type, const Name& name);
  ~NodeImpl() override;

  const TreePtr& GetTree() const override { return tree_; }
  xmlNodePtr GetNode() const override {
    if (node_ == nullptr) RequireNode();
    return node_;
  }

  // The draft, for a handle that has no node.
  const Draft& GetDraft() const { return draft_; }
  // Whether it is a draft that hangs nowhere.
  bool IsLooseDraft() const { return node_ == nullptr && above_ == nullptr && !tree_->IsOpen(*this); }
  // Gives a draft that is in no other, and its open parts, their nodes, which hang nowhere but in each other.
  xmlNodePtr BecomeNode() const;
  // Makes an element or attribute the last part of this element without making nodes. False when both have to
  // be nodes for that.
  bool TakeDraft(const NodeImpl& part) const;

  NodeType nodeType() const override;
  std::string nodeName() const override;
  std::string text() const override;
  void setText(std::string_view text) override;
  NamedNodeMapPtr attributes() const override;
  NodePtr parentNode() const override;
  NodePtr firstChild() const override;
  NodePtr appendChild(const NodePtr& child) override;
  NodePtr cloneNode(bool deep) const override;
  NodePtr selectSingleNode(std::string_view expression) const override;
  NodeListPtr selectNodes(std::string_view expression) const override;

 private:
  void RequireNode() const;
  bool MayTake(const NodeImpl& part) const;
  void SetDraftText(std::string_view text, bool holdsMarkup);
  void SetNodeText(xmlNodePtr node, std::string_view text);

  TreePtr tree_;
  // Whether it is a node or not yet makes no difference to anybody who looks at it.
  mutable xmlNodePtr node_ = nullptr;
  mutable const NodeImpl* above_ = nullptr;  // the draft whose open part this is
  mutable const NodeImpl* below_ = nullptr;  // the open part
  mutable Draft draft_;
  mutable AttributeMap attributes_{*this};
};

// Null for a node of another class.
inline const NodeImpl* AsNodeImpl(const Node& node) {
  return typeid(node) == typeid(NodeImpl) ? static_cast<const NodeImpl*>(&node) : nullptr;
}

// The parts that an element and the document share.
std::string TextOf(Tree& tree, xmlNodePtr node);
NodePtr FirstChildOf(Tree& tree, xmlNodePtr node);
NodePtr AppendTo(Tree& tree, xmlNodePtr parent, const NodePtr& child);

}  // namespace MSXML2::libxml
