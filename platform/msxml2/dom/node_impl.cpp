#include "platform/msxml2/dom/node_impl.hpp"

#include <typeinfo>

#include "platform/automation/error.hpp"
#include "platform/msxml2/dom/characters.hpp"
#include "platform/msxml2/failure.hpp"

namespace MSXML2::dom {
namespace {

bool HoldsText(const pugi::xml_node& node) {
  return node.type() == pugi::node_element || node.type() == pugi::node_pcdata ||
         node.type() == pugi::node_cdata;
}

class TextCollector final : public pugi::xml_tree_walker {
 public:
  bool for_each(pugi::xml_node& node) override {
    if (HoldsText(node)) text_ += node.value();
    return true;
  }
  std::string Take() { return std::move(text_); }

 private:
  std::string text_;
};

NodeImpl& AsNodeImpl(const NodePtr& node) {
  if (!node) throw automation::Error(automation::ErrorNumber::ObjectRequired, kDocumentSource);
  Node& given = *node;
  if (typeid(given) != typeid(NodeImpl))
    throw automation::Error(automation::ErrorNumber::TypeMismatch, kDocumentSource);
  return static_cast<NodeImpl&>(given);
}

}  // namespace

NodePtr AttributeMap::getNamedItem(std::string_view name) const {
  const pugi::xml_attribute found = owner_.element_.attribute(std::string(name).c_str());
  return found ? std::make_shared<NodeImpl>(owner_.tree_, owner_.element_, found) : nullptr;
}

void AttributeMap::setNamedItem(const NodePtr& attribute) {
  NodeImpl& given = AsNodeImpl(attribute);
  if (!given.attribute_) Fail("'" + given.nodeName() + "' is no attribute.");
  if (given.element_ == owner_.element_) return;
  const pugi::xml_node holder = given.element_;
  if (holder != given.tree_->Detached())
    Fail("The attribute '" + given.nodeName() + "' belongs to another element.");
  owner_.tree_->Touch(owner_.element_);
  pugi::xml_node element = owner_.element_;
  pugi::xml_attribute here = element.attribute(given.attribute_.name());
  if (here) {
    Checked(here.set_value(given.attribute_.value()));
  } else {
    here = Checked(element.append_copy(given.attribute_));
  }
  pugi::xml_node(holder).remove_attribute(given.attribute_);
  given.tree_ = owner_.tree_;
  given.element_ = element;
  given.attribute_ = here;
}

std::string NodeImpl::text() const {
  if (attribute_) return attribute_.value();
  TextCollector texts;
  pugi::xml_node element = element_;
  texts.for_each(element);
  element.traverse(texts);
  return texts.Take();
}

void NodeImpl::setText(std::string_view text) {
  RequireXmlText(text, kDocumentSource);
  tree_->Touch(element_);
  if (attribute_) {
    Checked(attribute_.set_value(text.data(), text.size()));
    return;
  }
  tree_->RemoveChildren(element_);
  const bool hasText = element_.value()[0] != '\0';
  if (hasText || !text.empty()) Checked(element_.text().set(text.data(), text.size()));
}

NamedNodeMapPtr NodeImpl::attributes() const {
  if (attribute_) return nullptr;
  // Whoever holds the map holds the element's handle.
  return {std::const_pointer_cast<NodeImpl>(shared_from_this()), &attributes_};
}

bool NodeImpl::hasChildNodes() const {
  if (attribute_) return false;
  if (element_.value()[0] != '\0') return true;
  for (const pugi::xml_node child : element_.children()) {
    if (HoldsText(child)) return true;
  }
  return false;
}

NodePtr NodeImpl::appendChild(const NodePtr& child) {
  const NodeImpl& given = AsNodeImpl(child);
  if (attribute_) Fail("'" + nodeName() + "' cannot have children.");
  if (given.attribute_)
    Fail("A node of this type cannot be the child of another: '" + given.nodeName() + "'.");
  if (given.tree_ != tree_) {
    tree_->Touch(element_);
    return std::make_shared<NodeImpl>(tree_, Checked(element_.append_copy(given.element_)));
  }
  if (!tree_->Append(element_, given.element_))
    Fail("A node cannot be appended to itself or to a node inside it.");
  return child;
}

}  // namespace MSXML2::dom
