#include "platform/msxml2/dom/selection.hpp"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "platform/msxml2/dom/node_impl.hpp"
#include "platform/msxml2/failure.hpp"

namespace MSXML2::dom {
namespace {

class NodeVector final : public NodeList {
 public:
  explicit NodeVector(std::vector<NodePtr> nodes) : nodes_(std::move(nodes)) {}
  std::size_t length() const override { return nodes_.size(); }
  NodePtr item(std::size_t index) const override { return index < nodes_.size() ? nodes_[index] : nullptr; }

 private:
  std::vector<NodePtr> nodes_;
};

pugi::xml_node ElementOf(const pugi::xpath_node& node) {
  return node.attribute() ? node.parent() : node.node();
}

bool CanBeShown(const pugi::xpath_node& node) {
  return node.attribute() || node.node().type() == pugi::node_element;
}

bool IsInside(pugi::xml_node node, pugi::xml_node top) {
  while (node && node != top) node = node.parent();
  return !node.empty();
}

// "//name": whatever else there is in the tree, it finds the same elements of the content.
bool IsSearchForName(std::string_view expression) {
  return expression.substr(0, 2) == "//" && std::all_of(expression.begin() + 2, expression.end(), [](char c) {
           return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
         });
}

// The node that lies below `otherTop` where `node` lies below `top`.
pugi::xml_node Counterpart(pugi::xml_node node, pugi::xml_node top, pugi::xml_node otherTop) {
  if (node == top) return otherTop;
  pugi::xml_node other = Counterpart(node.parent(), top, otherTop).first_child();
  while ((node = node.previous_sibling())) other = other.next_sibling();
  return other;
}

using Selected = std::vector<pugi::xpath_node>;

// All that is selected from `doc`, or the first of it alone.
Selected Evaluate(const pugi::xpath_query& query, const pugi::xml_document& doc, bool firstOnly) {
  if (firstOnly) {
    const pugi::xpath_node first = query.evaluate_node(doc);
    if (!first) return {};
    if (CanBeShown(first)) return {first};
  }
  pugi::xpath_node_set nodes = query.evaluate_node_set(doc);
  nodes.sort();
  Selected selected;
  std::copy_if(nodes.begin(), nodes.end(), std::back_inserter(selected), CanBeShown);
  return selected;
}

// An expression can look anywhere, so it is evaluated on a copy that has nothing detached beside it.
Selected EvaluateOnCopy(const pugi::xpath_query& query, pugi::xml_document& doc,
                        const pugi::xml_node& detached) {
  pugi::xml_document copy;
  for (const pugi::xml_node child : doc.children()) {
    if (child != detached) Checked(copy.append_copy(child));
  }
  Selected selected = Evaluate(query, copy, false);
  for (pugi::xpath_node& node : selected) {
    const pugi::xml_node element = Counterpart(ElementOf(node), copy, doc);
    node = node.attribute() ? pugi::xpath_node(element.attribute(node.attribute().name()), element)
                            : pugi::xpath_node(element);
  }
  return selected;
}

Selected Select(Tree& tree, std::string_view expression, bool firstOnly) {
  const std::string text(expression);
  for (const char* test : {"text(", "node("}) {
    if (text.find(test) != std::string::npos)
      Fail("The expression '" + text + "' asks for text nodes; compare with the element's text.");
  }
  try {
    const pugi::xpath_query query(text.c_str());
    if (query.return_type() != pugi::xpath_type_node_set)
      Fail("The expression '" + text + "' does not select nodes.");
    pugi::xml_document& doc = tree.Doc();
    const pugi::xml_node detached = tree.Detached();
    if (detached && !IsSearchForName(text)) return EvaluateOnCopy(query, doc, detached);
    Selected selected = Evaluate(query, doc, firstOnly);
    if (detached)
      std::erase_if(selected, [&](const auto& node) { return IsInside(ElementOf(node), detached); });
    return selected;
  } catch (const pugi::xpath_exception& error) {
    Fail("The expression '" + text + "' cannot be evaluated: " + error.what());
  }
}

NodePtr Handle(const TreePtr& tree, const pugi::xpath_node& node) {
  return std::make_shared<NodeImpl>(tree, ElementOf(node), node.attribute());
}

}  // namespace

NodePtr SelectSingleNode(const TreePtr& tree, std::string_view expression) {
  const Selected selected = Select(*tree, expression, true);
  return selected.empty() ? nullptr : Handle(tree, selected.front());
}

NodeListPtr SelectNodes(const TreePtr& tree, std::string_view expression) {
  std::vector<NodePtr> nodes;
  for (const pugi::xpath_node& node : Select(*tree, expression, false)) nodes.push_back(Handle(tree, node));
  return std::make_shared<NodeVector>(std::move(nodes));
}

}  // namespace MSXML2::dom
