// "MSXML2.DOMDocument" on a Tree.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/msxml2/dom_document.hpp"
#include "platform/msxml2/libxml/load.hpp"
#include "platform/msxml2/libxml/node_impl.hpp"
#include "platform/msxml2/libxml/tree.hpp"
#include "platform/scripting/local/path_resolver.hpp"

namespace MSXML2::libxml {

// What the documents of one runtime share.
struct Surroundings {
  explicit Surroundings(const Scripting::local::DriveTable& drives) : paths(drives) {}

  Scripting::local::PathResolver paths;
  LastLoaded lastLoaded;
};
using SurroundingsPtr = std::shared_ptr<Surroundings>;

class DocumentImpl final : public DOMDocument,
                           public TreeNode,
                           public std::enable_shared_from_this<DocumentImpl> {
 public:
  static std::shared_ptr<DocumentImpl> Create(SurroundingsPtr surroundings);
  // The document object of a tree whose own is gone, or has turned to another content.
  static std::shared_ptr<DocumentImpl> Over(TreePtr tree);

  bool IsOn(const Tree& tree) const { return tree_.get() == &tree; }
  // The operating system's path of the file that was loaded; empty for any other content.
  const std::string& LoadedFrom() const { return loadedFrom_; }

  const TreePtr& GetTree() const override { return tree_; }
  xmlNodePtr GetNode() const override { return tree_->Root(); }

  bool load(std::string_view path) override;
  bool loadXML(std::string_view text) override;
  std::string parseErrorReason() const override { return reason_; }
  void save(std::string_view path) override;
  FileState fileState() const override { return fileState_; }
  void setFileState(FileState state) override { fileState_ = std::move(state); }
  std::string xml() const override;
  NodePtr documentElement() const override;
  NodePtr createNode(NodeType type, std::string_view name, std::string_view namespaceUri) override;
  void setProperty(std::string_view name, std::string_view value) override;

  NodeType nodeType() const override { return NodeType::Document; }
  std::string nodeName() const override { return "#document"; }
  std::string text() const override { return TextOf(*tree_, tree_->Root()); }
  void setText(std::string_view text) override;
  NamedNodeMapPtr attributes() const override { return nullptr; }
  NodePtr parentNode() const override { return nullptr; }
  NodePtr firstChild() const override { return FirstChildOf(*tree_, tree_->Root()); }
  NodePtr appendChild(const NodePtr& child) override { return AppendTo(*tree_, tree_->Root(), child); }
  NodePtr cloneNode(bool deep) const override;
  NodePtr selectSingleNode(std::string_view expression) const override;
  NodeListPtr selectNodes(std::string_view expression) const override;

  // Use Create and Over.
  DocumentImpl(SurroundingsPtr surroundings, TreePtr tree);

 private:
  void Become(TreePtr tree);
  bool Read(std::string bytes, const char* encoding);

  SurroundingsPtr surroundings_;
  TreePtr tree_;
  std::string loadedFrom_;
  FileState fileState_;
  std::string reason_;
};

}  // namespace MSXML2::libxml
