#include "platform/msxml2/libxml/parse.hpp"

#include <libxml/SAX2.h>
#include <libxml/parserInternals.h>

namespace MSXML2::libxml {
namespace {

constexpr int kSafeOptions =
    XML_PARSE_NONET | XML_PARSE_NOENT | XML_PARSE_NOCDATA | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;

// What the callbacks note during one parse; reached through the context's _private.
struct Watch {
  bool stopAtDoctype = false;
  bool metDoctype = false;
  bool tooDeep = false;
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
// read.
void OnEntity(void* context, const xmlChar* name, int type, const xmlChar* publicId, const xmlChar* systemId,
              xmlChar* content) {
  const bool internal = type == XML_INTERNAL_GENERAL_ENTITY || type == XML_INTERNAL_PARAMETER_ENTITY;
  if (internal) xmlSAX2EntityDecl(context, name, type, publicId, systemId, content);
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

Parsed ParseOnce(std::string_view text, const char* encoding, int options, Watch& watch) {
  const Owned<xmlParserCtxt> parser(xmlNewParserCtxt());
  if (!parser) return {nullptr, "Out of memory"};
  parser->_private = &watch;
  parser->sax->internalSubset = OnDoctype;
  parser->sax->entityDecl = OnEntity;
  parser->sax->startElementNs = OnElement;
  Owned<xmlDoc> doc(xmlCtxtReadMemory(parser.get(), text.data(), static_cast<int>(text.size()), nullptr,
                                      encoding, options));
  if (!doc || parser->wellFormed == 0 || parser->nsWellFormed == 0 || watch.tooDeep)
    return {nullptr, watch.tooDeep ? TooDeepReason() : PlaceAndMessage(parser->lastError)};
  return {std::move(doc), {}};
}

}  // namespace

std::string TooDeepReason() {
  return "The elements lie deeper inside each other than " + std::to_string(kDeepestElement) + ".";
}

std::string PlaceAndMessage(const xmlError& error) {
  if (error.code == XML_ERR_OK) return "The document is not well-formed.";
  return "Line " + std::to_string(error.line) + ", column " + std::to_string(error.int2) + ": " +
         Message(error);
}

Parsed Parse(std::string_view text, const char* encoding) {
  if (text.size() > kLargestDocument) {
    return {nullptr, "The document is larger than 2 GiB."};
  }
  // The library's limits are all or nothing: texts above 10 MB need them off, entities need them on.
  Watch huge{.stopAtDoctype = true};
  Parsed parsed = ParseOnce(text, encoding, kSafeOptions | XML_PARSE_HUGE, huge);
  if (!huge.metDoctype) return parsed;
  Watch limited;
  return ParseOnce(text, encoding, kSafeOptions, limited);
}

}  // namespace MSXML2::libxml
