// Owners for what libxml2 allocates, and its characters as C++ text.
#pragma once

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <memory>
#include <string>
#include <string_view>

namespace MSXML2::libxml {

struct Freer {
  void operator()(xmlDoc* doc) const { xmlFreeDoc(doc); }
  void operator()(xmlChar* text) const { xmlFree(text); }
  void operator()(xmlParserCtxt* context) const {
    if (context->myDoc != nullptr) xmlFreeDoc(context->myDoc);
    context->myDoc = nullptr;
    xmlFreeParserCtxt(context);
  }
};
template <class T>
using Owned = std::unique_ptr<T, Freer>;

inline const xmlChar* XmlChars(const char* text) {
  return reinterpret_cast<const xmlChar*>(text);
}

inline std::string_view Text(const xmlChar* text) {
  return text == nullptr ? std::string_view() : std::string_view(reinterpret_cast<const char*>(text));
}

// The library's message without its line break.
inline std::string Message(const xmlError& error) {
  std::string message = error.message == nullptr ? "unknown error" : error.message;
  while (!message.empty() && (message.back() == '\n' || message.back() == ' ')) message.pop_back();
  return message;
}

}  // namespace MSXML2::libxml
