#include "platform/msxml2/dom/writer.hpp"

#include <cstddef>
#include <cstring>
#include <string>

namespace MSXML2::dom {
namespace {

constexpr std::size_t kPiece = std::size_t{1} << 16;

class Writer {
 public:
  explicit Writer(const std::function<void(std::string_view)>& sink) : sink_(sink) {
    buffer_.reserve(kPiece);
  }

  void Node(const pugi::xml_node& top) {
    for (pugi::xml_node node = top;;) {
      if (Open(node)) {
        node = node.first_child();
        continue;
      }
      while (node != top && !node.next_sibling()) {
        node = node.parent();
        Close(node);
      }
      if (node == top) return;
      node = node.next_sibling();
    }
  }

  void Raw(std::string_view text) {
    if (buffer_.size() + text.size() > kPiece) Flush();
    if (text.size() > kPiece) {
      sink_(text);
    } else {
      buffer_.append(text);
    }
  }

  void Flush() {
    if (!buffer_.empty()) sink_(buffer_);
    buffer_.clear();
  }

 private:
  // Writes what stands before the node's children, or all of a node without any. True when there are some.
  bool Open(const pugi::xml_node& node) {
    switch (node.type()) {
      case pugi::node_element:
        return OpenElement(node);
      case pugi::node_pcdata:
      case pugi::node_cdata:
        Escaped(node.value(), "&<>\r");
        return false;
      case pugi::node_comment:
        Enclosed("<!--", node.value(), "-->");
        return false;
      case pugi::node_doctype:
        Enclosed("<!DOCTYPE ", node.value(), ">");
        return false;
      case pugi::node_pi:
        Enclosed("<?", node.name(), node.value()[0] == '\0' ? "" : " ");
        Enclosed("", node.value(), "?>");
        return false;
      case pugi::node_declaration:
        Enclosed(R"(<?xml version="1.0" encoding="UTF-8")", "",
                 std::string_view(node.attribute("standalone").value()) == "yes" ? R"( standalone="yes"?>)"
                                                                                 : "?>");
        return false;
      default:
        return false;
    }
  }

  bool OpenElement(const pugi::xml_node& node) {
    Enclosed("<", node.name(), "");
    for (const pugi::xml_attribute attribute : node.attributes()) {
      Enclosed(" ", attribute.name(), "=\"");
      Escaped(attribute.value(), "&<>\r\"\t\n");
      Raw("\"");
    }
    const char* const text = node.value();  // the first text in it
    const bool hasChildren = !node.first_child().empty();
    if (text[0] == '\0' && !hasChildren) {
      Raw("/>");
      return false;
    }
    Raw(">");
    Escaped(text, "&<>\r");
    if (!hasChildren) Close(node);
    return hasChildren;
  }

  void Close(const pugi::xml_node& node) { Enclosed("</", node.name(), ">"); }

  void Enclosed(std::string_view before, const char* text, std::string_view after) {
    Raw(before);
    Raw(text);
    Raw(after);
  }

  void Escaped(const char* text, const char* special) {
    while (true) {
      const std::size_t plain = std::strcspn(text, special);
      Raw({text, plain});
      text += plain;
      if (*text == '\0') return;
      Raw(ReferenceTo(*text++));
    }
  }

  static std::string_view ReferenceTo(char character) {
    switch (character) {
      case '&':
        return "&amp;";
      case '<':
        return "&lt;";
      case '>':
        return "&gt;";
      case '"':
        return "&quot;";
      case '\t':
        return "&#9;";
      case '\n':
        return "&#10;";
      default:
        return "&#13;";
    }
  }

  const std::function<void(std::string_view)>& sink_;
  std::string buffer_;
};

}  // namespace

void Write(Tree& tree, const std::function<void(std::string_view)>& sink) {
  Writer writer(sink);
  const pugi::xml_node detached = tree.Detached();
  for (const pugi::xml_node node : tree.Doc().children()) {
    if (node == detached) continue;
    writer.Node(node);
    writer.Raw("\n");
  }
  writer.Flush();
}

}  // namespace MSXML2::dom
