#include "platform/msxml2/libxml/draft.hpp"

#include <cstring>
#include <memory>
#include <new>

#include "platform/msxml2/libxml/escaping.hpp"
#include "platform/msxml2/libxml/handles.hpp"

namespace MSXML2::libxml {
namespace {

class Cursor {
 public:
  explicit Cursor(char* out) : out_(out) {}
  Cursor& operator<<(std::string_view text) {
    std::memcpy(out_, text.data(), text.size());
    out_ += text.size();
    return *this;
  }

 private:
  char* out_;
};

// Makes nodes of markup that AppendMarkup has written, which has no other forms than those.
class Builder {
 public:
  Builder(xmlDocPtr doc, std::string_view markup) : doc_(doc), rest_(markup) {}

  // Up to the end of the attributes.
  void Attributes(xmlNodePtr element) {
    xmlAttrPtr last = nullptr;
    while (Skip(" ")) {
      const std::string name(Until('='));
      rest_.remove_prefix(2);
      xmlAttrPtr attribute = xmlNewDocProp(doc_, XmlChars(name.c_str()), nullptr);
      if (attribute == nullptr) throw std::bad_alloc();
      attribute->parent = element;
      attribute->prev = last;
      (last != nullptr ? last->next : element->properties) = attribute;
      last = attribute;
      Value(reinterpret_cast<xmlNodePtr>(attribute), Until('"'));
      rest_.remove_prefix(1);
    }
  }

  void Content(xmlNodePtr element) {
    while (!rest_.empty()) {
      if (Skip("</")) {
        Until('>');
        rest_.remove_prefix(1);
        element = element->parent;
      } else if (Skip("<")) {
        const std::string name(rest_.substr(0, rest_.find_first_of(" />")));
        rest_.remove_prefix(name.size());
        const xmlNodePtr child = xmlNewDocNode(doc_, nullptr, XmlChars(name.c_str()), nullptr);
        if (child == nullptr) throw std::bad_alloc();
        Link(element, child);
        Attributes(child);
        if (!Skip("/")) element = child;
        rest_.remove_prefix(1);
      } else {
        Value(element, Until('<'));
      }
    }
  }

  void Value(xmlNodePtr node, std::string_view markup) {
    if (markup.empty()) return;
    text_.clear();
    AppendUnescaped(text_, markup);
    const xmlNodePtr text = xmlNewDocTextLen(doc_, XmlChars(text_.data()), static_cast<int>(text_.size()));
    if (text == nullptr) throw std::bad_alloc();
    Link(node, text);
  }

 private:
  bool Skip(std::string_view start) {
    if (rest_.substr(0, start.size()) != start) return false;
    rest_.remove_prefix(start.size());
    return true;
  }
  std::string_view Until(char end) {
    const std::string_view before = rest_.substr(0, rest_.find(end));
    rest_.remove_prefix(before.size());
    return before;
  }
  static void Link(xmlNodePtr parent, xmlNodePtr child) {
    child->parent = parent;
    child->prev = parent->last;
    (parent->last != nullptr ? parent->last->next : parent->children) = child;
    parent->last = child;
  }

  xmlDocPtr doc_;
  std::string_view rest_;
  std::string text_;
};

struct NodeFreer {
  void operator()(xmlNode* node) const { xmlFreeNode(node); }
  void operator()(xmlAttr* attribute) const { xmlFreeProp(attribute); }
};

}  // namespace

std::size_t Draft::MarkupSize() const {
  const std::size_t nameSize = name->text.size();
  if (type == NodeType::Attribute) return 1 + nameSize + 2 + content.size() + 1;
  const std::size_t tag = 1 + nameSize + attributes.size();
  return content.empty() ? tag + 2 : tag + 1 + content.size() + 2 + nameSize + 1;
}

void Draft::AppendMarkup(std::string& out) const {
  const std::size_t before = out.size();
  out.resize(before + MarkupSize());
  Cursor cursor(out.data() + before);
  if (type == NodeType::Attribute) {
    cursor << " " << name->text << "=\"" << content << "\"";
  } else if (content.empty()) {
    cursor << "<" << name->text << attributes << "/>";
  } else {
    cursor << "<" << name->text << attributes << ">" << content << "</" << name->text << ">";
  }
}

xmlNodePtr MakeNode(xmlDocPtr doc, const Draft& draft) {
  const std::string name(draft.name->text);
  if (draft.type == NodeType::Attribute) {
    std::unique_ptr<xmlAttr, NodeFreer> attribute(xmlNewDocProp(doc, XmlChars(name.c_str()), nullptr));
    if (!attribute) throw std::bad_alloc();
    const auto node = reinterpret_cast<xmlNodePtr>(attribute.get());
    Builder(doc, {}).Value(node, draft.content);
    static_cast<void>(attribute.release());
    return node;
  }
  std::unique_ptr<xmlNode, NodeFreer> element(xmlNewDocNode(doc, nullptr, XmlChars(name.c_str()), nullptr));
  if (!element) throw std::bad_alloc();
  Builder(doc, draft.attributes).Attributes(element.get());
  Builder(doc, draft.content).Content(element.get());
  return element.release();
}

}  // namespace MSXML2::libxml
