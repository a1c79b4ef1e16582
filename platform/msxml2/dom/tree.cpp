#include "platform/msxml2/dom/tree.hpp"

#include <utility>

#include "platform/msxml2/failure.hpp"

namespace MSXML2::dom {

Tree::Tree(std::string_view text, std::optional<std::string> source) : source_(std::move(source)) {
  Parse(text);
}

void Tree::Parse(std::string_view text) {
  // An element's first text is kept in the element itself, which saves nearly half of the nodes.
  constexpr unsigned int kOptions = pugi::parse_full | pugi::parse_ws_pcdata | pugi::parse_embed_pcdata;
  const pugi::xml_parse_result result =
      doc_.load_buffer(text.data(), text.size(), kOptions, pugi::encoding_utf8);
  if (result.status == pugi::status_out_of_memory) throw std::bad_alloc();
  if (!result) Fail(std::string("The document could not be parsed: ") + result.description());
  parsed_ = true;
}

pugi::xml_document& Tree::Doc() {
  if (!parsed_) Parse(*source_);
  return doc_;
}

pugi::xml_node Tree::Root() {
  for (const pugi::xml_node child : Doc().children()) {
    if (child.type() == pugi::node_element && child != detached_) return child;
  }
  return {};
}

pugi::xml_node Tree::Detached() {
  if (detached_ && !detached_.first_child() && !detached_.first_attribute()) {
    doc_.remove_child(detached_);
    detached_ = {};
  }
  return detached_;
}

pugi::xml_node Tree::Holder() {
  if (!detached_) detached_ = Checked(Doc().append_child(pugi::node_element));
  return detached_;
}

pugi::xml_node Tree::NewElement(const std::string& name) {
  return Checked(Holder().append_child(name.c_str()));
}

pugi::xml_attribute Tree::NewAttribute(const std::string& name) {
  return Checked(Holder().append_attribute(name.c_str()));
}

bool Tree::Append(pugi::xml_node parent, pugi::xml_node child) {
  const bool changesContent = source_ && !(IsDetached(parent) && IsDetached(child));
  if (!parent.append_move(child)) return false;
  if (changesContent) source_.reset();
  return true;
}

void Tree::RemoveChildren(pugi::xml_node parent) {
  while (const pugi::xml_node child = parent.first_child()) {
    if (child.type() == pugi::node_element) {
      Holder().append_move(child);
    } else {
      parent.remove_child(child);
    }
  }
}

void Tree::Touch(pugi::xml_node node) {
  if (source_ && !IsDetached(node)) source_.reset();
}

bool Tree::IsDetached(pugi::xml_node node) const {
  for (; node; node = node.parent()) {
    if (node == detached_) return true;
  }
  return false;
}

}  // namespace MSXML2::dom
