#include "platform/msxml2/libxml/style_sheet.hpp"

#include <libxslt/imports.h>
#include <libxslt/xsltutils.h>

#include <mutex>
#include <new>
#include <set>
#include <string>

#include "platform/base/descriptor.hpp"
#include "platform/msxml2/failure.hpp"
#include "platform/msxml2/libxml/messages.hpp"
#include "platform/msxml2/libxml/parse.hpp"

namespace MSXML2::libxml {
namespace {

// The compiler reports through hooks of the whole process. They are ours while this object lives, and only
// one sheet is compiled at a time.
class CompilerMessages {
 public:
  CompilerMessages()
      : lock_(Mutex()), previous_(xsltGenericError), previousContext_(xsltGenericErrorContext) {
    xsltSetGenericErrorFunc(&text_, &CollectMessage);
    xmlSetGenericErrorFunc(&text_, &CollectMessage);
  }
  ~CompilerMessages() {
    xsltSetGenericErrorFunc(previousContext_, previous_);
    xmlSetGenericErrorFunc(nullptr, nullptr);
  }
  CompilerMessages(const CompilerMessages&) = delete;
  CompilerMessages& operator=(const CompilerMessages&) = delete;

  std::string Text() const { return Collected(text_, "no style sheet"); }

 private:
  static std::mutex& Mutex() {
    static std::mutex mutex;
    return mutex;
  }

  std::lock_guard<std::mutex> lock_;
  xmlGenericErrorFunc previous_;
  void* previousContext_;
  std::string text_;
};

bool IsXslt(const xmlNode* node, const char* name) {
  return node->type == XML_ELEMENT_NODE && node->ns != nullptr &&
         xmlStrEqual(node->ns->href, XSLT_NAMESPACE) != 0 && Text(node->name) == name;
}

// Puts the declarations of the included sheets in place of the xsl:include elements, which is what including
// means.
class Includer {
 public:
  explicit Includer(const std::string& loadedFrom)
      : folder_(loadedFrom.empty() ? std::string() : loadedFrom.substr(0, loadedFrom.rfind('/') + 1)),
        fromFile_(!loadedFrom.empty()) {}

  void Resolve(xmlDocPtr doc) {
    const xmlNodePtr sheet = xmlDocGetRootElement(doc);
    if (sheet == nullptr) return;
    for (xmlNodePtr node = sheet->children; node != nullptr;) {
      const xmlNodePtr next = node->next;
      if (IsXslt(node, "import")) Refuse("xsl:import is not allowed", node);
      if (IsXslt(node, "include")) Replace(doc, node);
      node = next;
    }
  }

 private:
  [[noreturn]] static void Refuse(const std::string& why, xmlNodePtr node) {
    const Owned<xmlChar> href(xmlGetNoNsProp(node, XmlChars("href")));
    Fail(why + ": " + std::string(Text(href.get())), kTemplateSource);
  }

  void Replace(xmlDocPtr doc, xmlNodePtr include) {
    const Owned<xmlChar> href(xmlGetNoNsProp(include, XmlChars("href")));
    const std::string name(Text(href.get()));
    const bool bareName =
        !name.empty() && name != ".." && name != "." && name.find_first_of("/\\:") == std::string::npos;
    if (!fromFile_ || !bareName)
      Refuse("xsl:include is allowed within the folder of the style sheet only", include);
    if (!open_.insert(name).second) Refuse("A style sheet includes itself", include);
    std::string bytes;
    if (base::ReadFile(folder_ + name, bytes) != 0) Refuse("An included style sheet cannot be read", include);
    Parsed parsed = Parse(bytes, Encoding::Declared);
    if (!parsed.doc) Fail(name + ": " + parsed.reason, kTemplateSource);
    Resolve(parsed.doc.get());
    const xmlNode* root = xmlDocGetRootElement(parsed.doc.get());
    if (!IsXslt(root, "stylesheet") && !IsXslt(root, "transform")) Refuse("Not a style sheet", include);
    for (xmlNodePtr child = root->children; child != nullptr; child = child->next) {
      const xmlNodePtr copy = xmlDocCopyNode(child, doc, 1);
      if (copy == nullptr) throw std::bad_alloc();
      xmlAddPrevSibling(include, copy);
    }
    xmlUnlinkNode(include);
    xmlFreeNode(include);
    open_.erase(name);
  }

  std::string folder_;
  bool fromFile_;
  std::set<std::string> open_;
};

}  // namespace

StyleSheetPtr Compile(const DOMDocument& document) {
  Parsed parsed = Parse(document.xml(), Encoding::Utf8);
  if (!parsed.doc) Fail(parsed.reason, kTemplateSource);
  Includer(document.fileState().path).Resolve(parsed.doc.get());
  const CompilerMessages messages;
  xsltStylesheetPtr compiled = xsltParseStylesheetDoc(parsed.doc.get());
  if (compiled == nullptr) Fail(messages.Text(), kTemplateSource);
  static_cast<void>(parsed.doc.release());
  StyleSheetPtr sheet(compiled, xsltFreeStylesheet);
  if (sheet->errors != 0) Fail(messages.Text(), kTemplateSource);
  // Output is UTF-8, or its subset ASCII where the sheet asks for that.
  const std::string_view wanted = Text(sheet->encoding);
  const bool ascii = wanted == "us-ascii" || wanted == "US-ASCII" || wanted == "ascii" || wanted == "ASCII";
  if (!wanted.empty() && !ascii) {
    xmlFree(sheet->encoding);
    sheet->encoding = xmlStrdup(XmlChars("UTF-8"));
  }
  return sheet;
}

}  // namespace MSXML2::libxml
