#include "platform/msxml2/libxml/serializer.hpp"

#include <algorithm>
#include <memory>

#include "platform/msxml2/libxml/escaping.hpp"
#include "platform/msxml2/libxml/handles.hpp"
#include "platform/msxml2/libxml/tree.hpp"

namespace MSXML2::libxml {
namespace {

constexpr std::size_t kFlushAt = std::size_t{1} << 16;

struct BufferFreer {
  void operator()(xmlBuffer* buffer) const { xmlBufferFree(buffer); }
};

class Writer {
 public:
  Writer(const Tree& tree, const Sink& sink) : tree_(tree), sink_(sink) {}

  void Node(const xmlNode* top) {
    for (const xmlNode* node = top;;) {
      const bool entered = Open(node);
      if (entered) {
        node = node->children;
        continue;
      }
      while (node != top && node->next == nullptr) {
        node = node->parent;
        Close(node);
      }
      if (node == top) return;
      node = node->next;
    }
  }

  void Raw(std::string_view text) {
    if (text.size() >= kFlushAt) {
      Flush();
      sink_(text);
      return;
    }
    buffer_.append(text);
    if (buffer_.size() >= kFlushAt) Flush();
  }

  void Flush() {
    if (!buffer_.empty()) sink_(buffer_);
    buffer_.clear();
  }

 private:
  // Writes what stands before the node's content; true when the content has to follow.
  bool Open(const xmlNode* node) {
    switch (node->type) {
      case XML_ELEMENT_NODE:
        OpenElement(node);
        return node->children != nullptr;
      case XML_TEXT_NODE:
      case XML_CDATA_SECTION_NODE:
        if (node->content != nullptr) Escaped(Text(node->content), Place::Content);
        return false;
      case XML_COMMENT_NODE:
        if (const Markup* markup = tree_.MarkupOf(node)) {
          markup->ForEachPiece([this](std::string_view piece) { Raw(piece); });
        } else {
          Raw("<!--");
          Raw(Text(node->content));
          Raw("-->");
        }
        return false;
      case XML_PI_NODE:
        Raw("<?");
        Raw(Text(node->name));
        if (node->content != nullptr) {
          Raw(" ");
          Raw(Text(node->content));
        }
        Raw("?>");
        return false;
      default:
        Other(node);
        return false;
    }
  }

  void Close(const xmlNode* node) {
    Raw("</");
    Name(node->ns, node->name);
    Raw(">");
  }

  void OpenElement(const xmlNode* node) {
    Raw("<");
    Name(node->ns, node->name);
    for (const xmlNs* ns = node->nsDef; ns != nullptr; ns = ns->next) {
      Raw(" xmlns");
      if (ns->prefix != nullptr) {
        Raw(":");
        Raw(Text(ns->prefix));
      }
      Raw("=\"");
      Escaped(Text(ns->href), Place::Attribute);
      Raw("\"");
    }
    for (const xmlAttr* attribute = node->properties; attribute != nullptr; attribute = attribute->next) {
      Raw(" ");
      Name(attribute->ns, attribute->name);
      Raw("=\"");
      for (const xmlNode* part = attribute->children; part != nullptr; part = part->next) {
        if (part->type == XML_TEXT_NODE) {
          Escaped(Text(part->content), Place::Attribute);
        } else {
          Other(part);
        }
      }
      Raw("\"");
    }
    Raw(node->children == nullptr ? "/>" : ">");
  }

  void Name(const xmlNs* ns, const xmlChar* name) {
    if (ns != nullptr && ns->prefix != nullptr) {
      Raw(Text(ns->prefix));
      Raw(":");
    }
    Raw(Text(name));
  }

  void Escaped(std::string_view text, Place place) {
    for (; !text.empty(); text.remove_prefix(std::min(text.size(), kFlushAt))) {
      AppendEscaped(buffer_, text.substr(0, kFlushAt), place);
      if (buffer_.size() >= kFlushAt) Flush();
    }
  }

  // Document types and references to entities, which no job makes.
  void Other(const xmlNode* node) {
    const std::unique_ptr<xmlBuffer, BufferFreer> buffer(xmlBufferCreate());
    xmlNodeDump(buffer.get(), node->doc, const_cast<xmlNode*>(node), 0, 0);
    Raw(Text(xmlBufferContent(buffer.get())));
  }

  const Tree& tree_;
  const Sink& sink_;
  std::string buffer_;
};

}  // namespace

std::string Serialize(const Tree& tree, const xmlNode* node) {
  std::string text;
  const Sink sink = [&text](std::string_view piece) { text.append(piece); };
  Writer writer(tree, sink);
  writer.Node(node);
  writer.Flush();
  return text;
}

void SerializeDocument(const Tree& tree, const Sink& sink) {
  Writer writer(tree, sink);
  constexpr int kNoDeclaration = -1;
  if (tree.Doc()->standalone != kNoDeclaration) {
    writer.Raw(tree.Doc()->standalone == 1 ? R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?>)"
                                           : R"(<?xml version="1.0" encoding="UTF-8"?>)");
    writer.Raw("\n");
  }
  for (const xmlNode* node = tree.Doc()->children; node != nullptr; node = node->next) {
    writer.Node(node);
    writer.Raw("\n");
  }
  writer.Flush();
}

}  // namespace MSXML2::libxml
