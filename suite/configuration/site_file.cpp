#include "suite/configuration/site_file.hpp"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <system_error>
#include <utility>

#include "platform/automation/error.hpp"
#include "platform/base/text.hpp"

namespace Vantrel {
namespace {

constexpr std::size_t kLargestFile = 1U << 20;

struct FreeDocument {
  void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
};
struct FreeContext {
  void operator()(xmlParserCtxt* context) const { xmlFreeParserCtxt(context); }
};
struct FreeText {
  void operator()(xmlChar* text) const { xmlFree(text); }
};

std::string Text(const xmlChar* text) {
  return text == nullptr ? std::string() : std::string(reinterpret_cast<const char*>(text));
}

}  // namespace

// Walks the document and says, for whatever does not belong there, where it stands and what should.
class SiteFileReader {
 public:
  explicit SiteFileReader(const std::filesystem::path& file) {
    result_.path_ = file;
    result_.folder_ = file.parent_path().string();
  }

  SiteFile Read(std::string_view content) {
    const std::unique_ptr<xmlDoc, FreeDocument> document = Parse(content);
    if (xmlGetIntSubset(document.get()) != nullptr) {
      // libxml2 does not know its line, and another encoding than UTF-8 hides it from us, too.
      const std::size_t start = content.find("<!DOCTYPE");
      const std::string_view before = content.substr(0, start == std::string_view::npos ? 0 : start);
      Fail(1 + std::count(before.begin(), before.end(), '\n'), "found a document type; expected none");
    }
    xmlNode* root = xmlDocGetRootElement(document.get());
    if (Text(root->name) != "siteConfiguration") {
      Fail(xmlGetLineNo(root), "found <" + Text(root->name) + ">; expected the root <siteConfiguration>");
    }
    for (xmlNode* child = FirstElement(root, "<product> or <section>"); child != nullptr;
         child = NextElement(child, "<product> or <section>")) {
      if (Text(child->name) == "product") {
        ReadGroup(child, "connection", result_.connections_);
      } else if (Text(child->name) == "section") {
        ReadGroup(child, "key", result_.values_);
      } else {
        FailUnexpected(child, "<product> or <section>");
      }
    }
    return std::move(result_);
  }

 private:
  [[noreturn]] void Fail(long line, const std::string& what) const {
    throw automation::Error(kUnreadableFile, "Vantrel.Configuration",
                            result_.path_.string() + ":" + std::to_string(line) + ": " + what);
  }
  [[noreturn]] void FailUnexpected(const xmlNode* node, const std::string& expected) const {
    const std::string found = node->type == XML_ELEMENT_NODE ? "<" + Text(node->name) + ">" : "text";
    Fail(xmlGetLineNo(node), "found " + found + "; expected " + expected);
  }

  std::unique_ptr<xmlDoc, FreeDocument> Parse(std::string_view content) const {
    const std::unique_ptr<xmlParserCtxt, FreeContext> context(xmlNewParserCtxt());
    if (!context) throw automation::Error(automation::ErrorNumber::OutOfMemory);
    std::unique_ptr<xmlDoc, FreeDocument> document(
        xmlCtxtReadMemory(context.get(), content.data(), static_cast<int>(content.size()), nullptr, nullptr,
                          XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_BIG_LINES));
    if (!document) {
      const xmlError* error = xmlCtxtGetLastError(context.get());
      const std::string reason(error != nullptr && error->message != nullptr
                                   ? base::Trimmed(error->message)
                                   : "the content is not well-formed");
      Fail(error != nullptr && error->line > 0 ? error->line : 1, reason + "; expected well-formed XML");
    }
    return document;
  }

  // The first element from `node` on among its siblings; text between elements is refused.
  xmlNode* ElementFrom(xmlNode* node, const std::string& expected) const {
    for (; node != nullptr; node = node->next) {
      if (node->type == XML_ELEMENT_NODE) return node;
      if (node->type == XML_COMMENT_NODE || node->type == XML_PI_NODE) continue;
      if (node->type == XML_TEXT_NODE && xmlIsBlankNode(node) != 0) continue;
      FailUnexpected(node, expected);
    }
    return nullptr;
  }
  xmlNode* FirstElement(const xmlNode* parent, const std::string& expected) const {
    return ElementFrom(parent->children, expected);
  }
  xmlNode* NextElement(const xmlNode* node, const std::string& expected) const {
    return ElementFrom(node->next, expected);
  }

  std::string NameOf(xmlNode* element) const {
    const std::unique_ptr<xmlChar, FreeText> name(
        xmlGetNoNsProp(element, reinterpret_cast<const xmlChar*>("name")));
    if (!name) {
      Fail(xmlGetLineNo(element),
           "<" + Text(element->name) + "> has no name; expected <" + Text(element->name) + " name=\"...\">");
    }
    return Text(name.get());
  }

  void ReadGroup(xmlNode* group, const std::string& entry, SiteFile::Table& table) const {
    const std::string groupName = NameOf(group);
    const std::string expected = "<" + entry + " name=\"...\"> in <" + Text(group->name) + ">";
    for (xmlNode* child = FirstElement(group, expected); child != nullptr;
         child = NextElement(child, expected)) {
      if (Text(child->name) != entry) FailUnexpected(child, expected);
      for (const xmlNode* inner = child->children; inner != nullptr; inner = inner->next) {
        if (inner->type == XML_ELEMENT_NODE) FailUnexpected(inner, "text in <" + entry + ">");
      }
      const std::unique_ptr<xmlChar, FreeText> content(xmlNodeGetContent(child));
      const std::string name = NameOf(child);
      if (!table.emplace(std::pair(groupName, name), base::Trimmed(Text(content.get()))).second) {
        Fail(xmlGetLineNo(child),
             "a second " + entry + " \"" + name + "\" in \"" + groupName + "\"; expected one");
      }
    }
  }

  SiteFile result_;
};

SiteFile SiteFile::Parse(std::string_view content, const std::filesystem::path& file) {
  return SiteFileReader(file).Read(content);
}

SiteFile SiteFile::Read(const std::filesystem::path& file) {
  return *RereadSiteFile().Read(file);
}

std::shared_ptr<const SiteFile> RereadSiteFile::Read(const std::filesystem::path& file) {
  return Current([&] { return bytes_.Read(file, kLargestFile); });
}

std::shared_ptr<const SiteFile> RereadSiteFile::Read(std::string_view path, std::string_view base) {
  return Current([&] { return bytes_.Read(path, base, kLargestFile); });
}

template <class ReadBytes>
std::shared_ptr<const SiteFile> RereadSiteFile::Current(const ReadBytes& read) {
  const std::lock_guard lock(mutex_);
  const auto fail = [this](const std::string& why) {
    throw automation::Error(kUnreadableFile, "Vantrel.Configuration",
                            bytes_.File() + ": " + why + "; expected the site configuration of a suite");
  };
  try {
    const suite::RereadFile::Outcome outcome = read();
    if (outcome == suite::RereadFile::Outcome::TooLarge) fail("is larger than 1 MiB");
    if (outcome == suite::RereadFile::Outcome::Changed) parsed_ = nullptr;
  } catch (const std::system_error& error) {
    if (error.code() == std::errc::is_a_directory) fail("is a folder");
    if (error.code() == std::errc::invalid_argument) fail("is no ordinary file");
    fail("cannot be read: " + error.code().message());
  }
  if (!parsed_) parsed_ = std::make_shared<const SiteFile>(SiteFile::Parse(bytes_.Content(), bytes_.File()));
  return parsed_;
}

const std::string& SiteFile::Connection(std::string_view product, std::string_view connection) const {
  // There are two, and jobs ask with every statement.
  for (const auto& [names, text] : connections_) {
    if (names.second == connection && names.first == product) return text;
  }
  throw automation::Error(kMissingValue, "Vantrel.Configuration",
                          path_.string() + ": product \"" + std::string(product) + "\" has no connection \"" +
                              std::string(connection) + "\"");
}

const std::string& SiteFile::Value(std::string_view section, std::string_view key) const {
  const auto found = values_.find(std::pair(section, key));
  if (found != values_.end()) return found->second;
  throw automation::Error(
      kMissingValue, "Vantrel.Configuration",
      path_.string() + ": section \"" + std::string(section) + "\" has no key \"" + std::string(key) + "\"");
}

std::optional<std::string> SiteFile::FindValue(std::string_view section, std::string_view key) const {
  const auto found = values_.find(std::pair(section, key));
  return found == values_.end() ? std::nullopt : std::optional(found->second);
}

std::optional<std::string> SiteFile::FindConnection(std::string_view product,
                                                    std::string_view connection) const {
  const auto found = connections_.find(std::pair(product, connection));
  return found == connections_.end() ? std::nullopt : std::optional(found->second);
}

std::vector<std::string> SiteFile::Sections() const {
  std::vector<std::string> sections;
  for (const auto& [names, value] : values_) {
    if (sections.empty() || sections.back() != names.first) sections.push_back(names.first);
  }
  return sections;
}

std::map<std::string, std::string> SiteFile::Values(std::string_view section) const {
  std::map<std::string, std::string> values;
  for (const auto& [names, value] : values_) {
    if (names.first == section) values.emplace(names.second, value);
  }
  return values;
}

}  // namespace Vantrel
