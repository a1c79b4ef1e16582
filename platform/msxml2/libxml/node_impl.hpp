// A handle of one node of a Tree.
#pragma once

#include <memory>
#include <string>
#include <string_view>

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

class NodeImpl final : public Node, public TreeNode, public std::enable_shared_from_this<NodeImpl> {
 public:
  NodeImpl(TreePtr tree, xmlNodePtr node);
  ~NodeImpl() override;

  const TreePtr& GetTree() const override { return tree_; }
  xmlNodePtr GetNode() const override { return node_; }

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
  TreePtr tree_;
  xmlNodePtr node_;
};

// The parts that an element and the document share.
std::string TextOf(Tree& tree, xmlNodePtr node);
NodePtr FirstChildOf(Tree& tree, xmlNodePtr node);
NodePtr AppendTo(Tree& tree, xmlNodePtr parent, const NodePtr& child);

}  // namespace MSXML2::libxml
