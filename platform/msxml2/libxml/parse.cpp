#include "platform/msxml2/libxml/parse.hpp"

#include <libxml/SAX2.h>
#include <libxml/parserInternals.h>
#include <libxml/xmlsave.h>
#include <strings.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>

namespace MSXML2::libxml {
namespace {

constexpr std::size_t kLargestDocument = 0x7FFFFFFF;  // the library counts bytes in an int

constexpr int kSafeOptions =
    XML_PARSE_NONET | XML_PARSE_NOENT | XML_PARSE_NOCDATA | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;

// What the callbacks note during one parse; reached through the context's _private.
struct Watch {
  bool stopAtDoctype = false;
  bool metDoctype = false;
  bool tooDeep = false;
  std::string undeclared = {};  // an entity that is referred to
};

Watch& WatchOf(void* context) {
  return *static_cast<Watch*>(static_cast<xmlParserCtxtPtr>(context)->_private);
}

void OnDoctype(void* context, const xmlChar* name, const xmlChar* externalId, const xmlChar* systemId) {
  Watch& watch = WatchOf(context);
  watch.metDoctype = true;
  if (watch.stopAtDoctype) {
    xmlStopParser(static_cast<xmlParserCtxtPtr>(context));
    return;
  }
  xmlSAX2InternalSubset(context, name, externalId, systemId);
}

// Entities that stand in another file are not declared, so that a reference to one is an error and never a
// read. The library takes it for no error where a part of the declarations is in another file.
void OnEntity(void* context, const xmlChar* name, int type, const xmlChar* publicId, const xmlChar* systemId,
              xmlChar* content) {
  const bool internal = type == XML_INTERNAL_GENERAL_ENTITY || type == XML_INTERNAL_PARAMETER_ENTITY;
  if (internal) xmlSAX2EntityDecl(context, name, type, publicId, systemId, content);
}

void OnReference(void* context, const xmlChar* name) {
  WatchOf(context).undeclared = Text(name);
  xmlStopParser(static_cast<xmlParserCtxtPtr>(context));
}

void OnElement(void* context, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri,
               int namespaceCount, const xmlChar** namespaces, int attributeCount, int defaultedCount,
               const xmlChar** attributes) {
  auto* parser = static_cast<xmlParserCtxtPtr>(context);
  if (parser->nodeNr >= kDeepestElement) {
    WatchOf(context).tooDeep = true;
    xmlStopParser(parser);
    return;
  }
  xmlSAX2StartElementNs(context, name, prefix, uri, namespaceCount, namespaces, attributeCount,
                        defaultedCount, attributes);
}

std::string PlaceAndMessage(const xmlError& error) {
  if (error.code == XML_ERR_OK) return "The document is not well-formed.";
  return "Line " + std::to_string(error.line) + ", column " + std::to_string(error.int2) + ": " +
         Message(error);
}

Parsed ParseOnce(std::string_view text, Encoding encoding, int options, Watch& watch) {
  const Owned<xmlParserCtxt> parser(xmlNewParserCtxt());
  if (!parser) throw std::bad_alloc();
  parser->_private = &watch;
  parser->sax->internalSubset = OnDoctype;
  parser->sax->entityDecl = OnEntity;
  parser->sax->reference = OnReference;
  parser->sax->startElementNs = OnElement;
  Owned<xmlDoc> doc(xmlCtxtReadMemory(parser.get(), text.data(), static_cast<int>(text.size()), nullptr,
                                      encoding == Encoding::Utf8 ? "UTF-8" : nullptr, options));
  if (watch.tooDeep) return {nullptr, TooDeep()};
  if (!watch.undeclared.empty())
    return {nullptr, "The entity '" + watch.undeclared + "' is not declared in the document."};
  if (!doc || parser->wellFormed == 0 || parser->nsWellFormed == 0)
    return {nullptr, PlaceAndMessage(parser->lastError)};
  return {std::move(doc), {}};
}

struct BufferFreer {
  void operator()(xmlBuffer* buffer) const { xmlBufferFree(buffer); }
};

std::string InUtf8(xmlDocPtr doc) {
  const std::unique_ptr<xmlBuffer, BufferFreer> buffer(xmlBufferCreate());
  constexpr int kNoDeclaration = -1;
  const int options = doc->standalone == kNoDeclaration ? XML_SAVE_NO_DECL : 0;
  const xmlSaveCtxtPtr saved = buffer ? xmlSaveToBuffer(buffer.get(), "UTF-8", options) : nullptr;
  if (saved == nullptr) throw std::bad_alloc();
  const bool failed = xmlSaveDoc(saved, doc) < 0;
  if (xmlSaveClose(saved) < 0 || failed) throw std::bad_alloc();
  return std::string(Text(xmlBufferContent(buffer.get())));
}

// One pass over a text. It ends early where the text has to be converted before it can be taken as it is:
// with a document type, or in another encoding than UTF-8.
class Checker {
 public:
  Checker(std::string_view text, Encoding encoding) : text_(text), encoding_(encoding) {
    xmlSAXHandler events{};
    events.initialized = XML_SAX2_MAGIC;
    events.startElementNs = &OnStart;
    events.endElementNs = &OnEnd;
    events.internalSubset = &OnSubset;
    parser_.reset(xmlCreatePushParserCtxt(&events, this, nullptr, 0, nullptr));
    if (!parser_) throw std::bad_alloc();
    const int ignoreDeclared = encoding == Encoding::Utf8 ? XML_PARSE_IGNORE_ENC : 0;
    xmlCtxtUseOptions(parser_.get(), XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING |
                                         XML_PARSE_HUGE | ignoreDeclared);
  }

  // False when the text has to be converted.
  bool Run() {
    if (IsWide()) return false;
    constexpr std::size_t kChunk = std::size_t{1} << 16;
    for (std::size_t fed = 0; fed < text_.size() && !stopped_;) {
      const std::size_t count = std::min(kChunk, text_.size() - fed);
      if (xmlParseChunk(parser_.get(), text_.data() + fed, static_cast<int>(count), 0) != XML_ERR_OK) break;
      fed += count;
    }
    if (!stopped_) xmlParseChunk(parser_.get(), nullptr, 0, 1);
    return !mustConvert_;
  }

  Checked Verdict() const {
    if (depth_ > kDeepestElement) return {false, TooDeep(), {}};
    if (parser_->wellFormed == 0 || parser_->nsWellFormed == 0)
      return {false, PlaceAndMessage(parser_->lastError), {}};
    return {true, {}, {}};
  }

 private:
  // UTF-16 and its like, told by the first bytes.
  bool IsWide() const {
    const std::string_view start = text_.substr(0, 4);
    return encoding_ == Encoding::Declared &&
           (start.find('\0') != std::string_view::npos || start.substr(0, 2) == "\xFE\xFF" ||
            start.substr(0, 2) == "\xFF\xFE");
  }

  void Stop() {
    stopped_ = true;
    xmlStopParser(parser_.get());
  }
  void StopToConvert() {
    mustConvert_ = true;
    Stop();
  }

  static void OnSubset(void* self, const xmlChar*, const xmlChar*, const xmlChar*) {
    static_cast<Checker*>(self)->StopToConvert();
  }

  static void OnStart(void* self, const xmlChar*, const xmlChar*, const xmlChar*, int, const xmlChar**, int,
                      int, const xmlChar**) {
    auto& checker = *static_cast<Checker*>(self);
    if (++checker.depth_ > kDeepestElement) return checker.Stop();
    const auto* declared = reinterpret_cast<const char*>(checker.parser_->encoding);
    if (checker.depth_ == 1 && declared != nullptr && strcasecmp(declared, "UTF-8") != 0)
      checker.StopToConvert();
  }

  static void OnEnd(void* self, const xmlChar*, const xmlChar*, const xmlChar*) {
    --static_cast<Checker*>(self)->depth_;
  }

  std::string_view text_;
  Encoding encoding_;
  Owned<xmlParserCtxt> parser_;
  int depth_ = 0;
  bool mustConvert_ = false;
  bool stopped_ = false;
};

}  // namespace

std::string TooDeep() {
  return "The elements are nested deeper than " + std::to_string(kDeepestElement) + ".";
}

Parsed Parse(std::string_view text, Encoding encoding) {
  if (text.size() > kLargestDocument) return {nullptr, "The document is larger than 2 GiB."};
  // The library's limits are all or nothing: texts above 10 MB need them off, entities need them on.
  Watch huge{.stopAtDoctype = true};
  Parsed parsed = ParseOnce(text, encoding, kSafeOptions | XML_PARSE_HUGE, huge);
  if (!huge.metDoctype) return parsed;
  Watch limited;
  return ParseOnce(text, encoding, kSafeOptions, limited);
}

Checked Check(std::string_view text, Encoding encoding) {
  if (text.empty()) return {false, "The document is empty.", {}};
  Checker checker(text, encoding);
  if (checker.Run()) return checker.Verdict();
  const Parsed parsed = Parse(text, encoding);
  if (!parsed.doc) return {false, parsed.reason, {}};
  return {true, {}, InUtf8(parsed.doc.get())};
}

}  // namespace MSXML2::libxml
