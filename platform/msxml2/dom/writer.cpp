#include "platform/msxml2/dom/writer.hpp"

#include <cstddef>
#include <cstring>
#include <memory>

#include "platform/msxml2/failure.hpp"
#include "platform/msxml2/libxml/parse.hpp"

namespace MSXML2::dom {
namespace {

constexpr std::size_t kPiece = std::size_t{1} << 16;

class Writer {
 public:
  explicit Writer(const std::function<void(std::string_view)>& sink) : sink_(sink) {}

  void Node(const pugi::xml_node& node) {
    switch (node.type()) {
      case pugi::node_element:
        return Element(node);
      case pugi::node_pcdata:
      case pugi::node_cdata:
        return Escaped(node.value(), "&<>\r");
      case pugi::node_comment:
        return Enclosed("<!--", node.value(), "-->");
      case pugi::node_doctype:
        return Enclosed("<!DOCTYPE ", node.value(), ">");
      case pugi::node_pi:
        Enclosed("<?", node.name(), node.value()[0] == '\0' ? "" : " ");
        return Enclosed("", node.value(), "?>");
      case pugi::node_declaration:
        Raw(R"(<?xml version="1.0" encoding="UTF-8")");
        if (std::string_view(node.attribute("standalone").value()) == "yes") Raw(R"( standalone="yes")");
        return Raw("?>");
      default:
        return;
    }
  }

  void Raw(std::string_view text) {
    if (text.size() > kPiece - used_) {
      Flush();
      if (text.size() > kPiece) return sink_(text);
    }
    std::memcpy(buffer_.get() + used_, text.data(), text.size());
    used_ += text.size();
  }

  void Flush() {
    if (used_ != 0) sink_({buffer_.get(), used_});
    used_ = 0;
  }

 private:
  void Element(const pugi::xml_node& node) {
    if (++depth_ > libxml::kDeepestElement) Fail(libxml::TooDeep());
    const std::string_view name = node.name();
    Raw("<");
    Raw(name);
    for (auto attribute = node.first_attribute(); attribute; attribute = attribute.next_attribute()) {
      Enclosed(" ", attribute.name(), "=\"");
      Escaped(attribute.value(), "&<>\r\"\t\n");
      Raw("\"");
    }
    const char* const text = node.value();  // the first text in it
    pugi::xml_node child = node.first_child();
    if (text[0] == '\0' && !child) {
      Raw("/>");
    } else {
      Raw(">");
      Escaped(text, "&<>\r");
      for (; child; child = child.next_sibling()) Node(child);
      Raw("</");
      Raw(name);
      Raw(">");
    }
    --depth_;
  }

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
  const std::unique_ptr<char[]> buffer_ = std::make_unique_for_overwrite<char[]>(kPiece);
  std::size_t used_ = 0;
  int depth_ = 0;
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
