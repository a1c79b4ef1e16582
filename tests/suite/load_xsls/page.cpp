#include "tests/suite/load_xsls/page.hpp"

#include <libxml/HTMLparser.h>
#include <libxml/xpath.h>

#include <set>
#include <stdexcept>

namespace orvane_test {
namespace {

std::string TextOf(const xmlNode* node) {
  if (node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE ||
      node->type == XML_ATTRIBUTE_NODE) {
    xmlChar* content = xmlNodeGetContent(node);
    std::string text(reinterpret_cast<const char*>(content));
    xmlFree(content);
    return text;
  }
  if (node->type == XML_ELEMENT_NODE && std::string(reinterpret_cast<const char*>(node->name)) == "br")
    return "\n";
  std::string text;
  for (const xmlNode* child = node->children; child != nullptr; child = child->next) text += TextOf(child);
  return text;
}

}  // namespace

struct Page::State {
  xmlDocPtr doc = nullptr;

  template <class Taker>
  void Select(const std::string& expression, Taker&& take) const {
    xmlXPathContextPtr context = xmlXPathNewContext(doc);
    xmlXPathObjectPtr result = xmlXPathEval(reinterpret_cast<const xmlChar*>(expression.c_str()), context);
    if (result != nullptr && result->nodesetval != nullptr) {
      for (int i = 0; i < result->nodesetval->nodeNr; ++i) take(result->nodesetval->nodeTab[i]);
    }
    xmlXPathFreeObject(result);
    xmlXPathFreeContext(context);
  }

  std::vector<std::string> Names(const std::string& expression) const {
    std::set<std::string> names;
    Select(expression, [&](const xmlNode* node) { names.insert(reinterpret_cast<const char*>(node->name)); });
    return {names.begin(), names.end()};
  }
};

Page::Page(std::string_view html) : state_(std::make_unique<State>()) {
  state_->doc = htmlReadMemory(html.data(), static_cast<int>(html.size()), nullptr, nullptr,
                               HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING | HTML_PARSE_NONET);
  if (state_->doc == nullptr) throw std::runtime_error("no HTML");
}

Page::~Page() {
  xmlFreeDoc(state_->doc);
}

std::vector<std::string> Page::Texts(const std::string& expression) const {
  std::vector<std::string> texts;
  state_->Select(expression, [&](const xmlNode* node) { texts.push_back(TextOf(node)); });
  return texts;
}

std::vector<std::string> Page::ElementNames() const {
  return state_->Names("//*");
}
std::vector<std::string> Page::AttributeNames() const {
  return state_->Names("//@*");
}

}  // namespace orvane_test
