#include "platform/msxml2/libxml/selection.hpp"

#include <libxml/xpathInternals.h>

#include <charconv>
#include <cstddef>
#include <new>
#include <string>
#include <system_error>
#include <unordered_map>
#include <vector>

#include "platform/msxml2/libxml/failure.hpp"

namespace MSXML2::libxml {
namespace {

class NodeVector final : public NodeList {
 public:
  explicit NodeVector(std::vector<NodePtr> nodes) : nodes_(std::move(nodes)) {}
  std::size_t length() const override { return nodes_.size(); }
  NodePtr item(std::size_t index) const override { return index < nodes_.size() ? nodes_[index] : nullptr; }

 private:
  std::vector<NodePtr> nodes_;
};

// A name without a prefix, beyond doubt.
bool IsPlainName(std::string_view name) {
  if (name.empty() || name[0] == '-' || name[0] == '.' || (name[0] >= '0' && name[0] <= '9')) return false;
  for (const char c : name) {
    const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                       c == '_' || c == '-' || c == '.';
    if (!plain) return false;
  }
  return true;
}

// The name of an expression of the form "//name"; empty for any other expression.
std::string_view NameOfSimplePath(std::string_view expression) {
  if (expression.substr(0, 2) != "//") return {};
  const std::string_view name = expression.substr(2);
  return IsPlainName(name) ? name : std::string_view();
}

// Name and number of an expression of the form "//name[position()=number]"; an empty name for any other.
struct NumberedName {
  std::string_view name;
  std::size_t number = 0;
};

NumberedName NumberedNameOf(std::string_view expression) {
  constexpr std::string_view kPosition = "[position()=";
  const std::size_t bracket = expression.find(kPosition);
  if (bracket == std::string_view::npos || expression.back() != ']') return {};
  const std::string_view name = NameOfSimplePath(expression.substr(0, bracket));
  const std::string_view digits =
      expression.substr(bracket + kPosition.size(), expression.size() - bracket - kPosition.size() - 1);
  NumberedName result{name, 0};
  const auto [end, problem] = std::from_chars(digits.data(), digits.data() + digits.size(), result.number);
  const bool number = problem == std::errc() && end == digits.data() + digits.size();
  return number ? result : NumberedName{};
}

// Of the elements that are the `number`th of their name in their parent, the first.
xmlNodePtr FirstNumbered(const std::vector<xmlNodePtr>& elements, std::size_t number) {
  std::unordered_map<const xmlNode*, std::size_t> seen;
  for (const xmlNodePtr element : elements) {
    if (++seen[element->parent] == number) return element;
  }
  return nullptr;
}

void Ignore(void*, xmlErrorPtr) {}

bool CanBeShown(const xmlNode* node) {
  return node->type == XML_ELEMENT_NODE || node->type == XML_ATTRIBUTE_NODE || node->type == XML_TEXT_NODE ||
         node->type == XML_DOCUMENT_NODE;
}

std::vector<xmlNodePtr> Evaluate(Tree& tree, xmlNodePtr from, std::string_view expression) {
  const std::string text(expression);
  tree.ExpandAll();
  const Owned<xmlXPathContext> context(xmlXPathNewContext(tree.Doc()));
  if (!context) throw std::bad_alloc();
  context->node = from;
  context->error = Ignore;
  // Prefixes mean what they mean on the document's element.
  if (const xmlNode* element = xmlDocGetRootElement(tree.Doc())) {
    for (const xmlNs* ns = element->nsDef; ns != nullptr; ns = ns->next) {
      if (ns->prefix != nullptr) xmlXPathRegisterNs(context.get(), ns->prefix, ns->href);
    }
  }
  const Owned<xmlXPathObject> result(xmlXPathEval(XmlChars(text.c_str()), context.get()));
  if (!result) Fail("The expression '" + text + "' cannot be evaluated: " + Message(context->lastError));
  if (result->type != XPATH_NODESET) Fail("The expression '" + text + "' does not select nodes.");
  std::vector<xmlNodePtr> nodes;
  if (result->nodesetval == nullptr) return nodes;
  xmlXPathNodeSetSort(result->nodesetval);
  for (int i = 0; i < result->nodesetval->nodeNr; ++i) {
    if (CanBeShown(result->nodesetval->nodeTab[i])) nodes.push_back(result->nodesetval->nodeTab[i]);
  }
  return nodes;
}

}  // namespace

NodePtr SelectSingleNode(Tree& tree, xmlNodePtr from, std::string_view expression) {
  if (const std::string_view name = NameOfSimplePath(expression); !name.empty()) {
    return tree.Wrap(tree.FirstElement(name));
  }
  if (const auto [name, number] = NumberedNameOf(expression); !name.empty()) {
    return tree.Wrap(FirstNumbered(tree.Elements(name), number));
  }
  const std::vector<xmlNodePtr> nodes = Evaluate(tree, from, expression);
  return nodes.empty() ? nullptr : tree.Wrap(nodes.front());
}

NodeListPtr SelectNodes(Tree& tree, xmlNodePtr from, std::string_view expression) {
  const std::string_view name = NameOfSimplePath(expression);
  const std::vector<xmlNodePtr> found = name.empty() ? Evaluate(tree, from, expression) : tree.Elements(name);
  std::vector<NodePtr> nodes;
  nodes.reserve(found.size());
  for (const xmlNodePtr node : found) nodes.push_back(tree.Wrap(node));
  return std::make_shared<NodeVector>(std::move(nodes));
}

}  // namespace MSXML2::libxml
