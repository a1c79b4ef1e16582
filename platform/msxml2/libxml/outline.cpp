#include "platform/msxml2/libxml/outline.hpp"

#include <libxml/parser.h>
#include <strings.h>

#include <algorithm>
#include <unordered_set>

#include "platform/msxml2/libxml/handles.hpp"
#include "platform/msxml2/libxml/parse.hpp"

namespace MSXML2::libxml {
namespace {

constexpr std::size_t kSmallestCut = 1024;
constexpr std::size_t kChunk = std::size_t{1} << 16;

class Reader {
 public:
  explicit Reader(std::string_view text) : text_(text) {}

  Outline Read() {
    Outline outline;
    if (IsWide()) return outline;
    xmlSAXHandler events{};
    events.initialized = XML_SAX2_MAGIC;
    events.startElementNs = &OnStart;
    events.endElementNs = &OnEnd;
    events.internalSubset = &OnDoctype;
    const Owned<xmlParserCtxt> parser(xmlCreatePushParserCtxt(&events, this, nullptr, 0, nullptr));
    if (!parser) return outline;
    parser_ = parser.get();
    xmlCtxtUseOptions(parser_, XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_HUGE);
    for (std::size_t fed = 0; fed < text_.size() && !unusable_ && !tooDeep_;) {
      const std::size_t count = std::min(kChunk, text_.size() - fed);
      if (xmlParseChunk(parser_, text_.data() + fed, static_cast<int>(count), 0) != XML_ERR_OK) break;
      fed += count;
    }
    if (!unusable_ && !tooDeep_) xmlParseChunk(parser_, nullptr, 0, 1);
    outline.usable = !unusable_;
    outline.wellFormed = parser_->wellFormed != 0 && parser_->nsWellFormed != 0 && !tooDeep_;
    if (tooDeep_) {
      outline.reason = TooDeepReason();
    } else if (!outline.wellFormed) {
      outline.reason = PlaceAndMessage(parser_->lastError);
    }
    outline.cuts = std::move(cuts_);
    return outline;
  }

 private:
  // UTF-16 and its like, told by the first bytes.
  bool IsWide() const {
    const std::string_view start = text_.substr(0, 4);
    return start.find('\0') != std::string_view::npos || start.substr(0, 2) == "\xFE\xFF" ||
           start.substr(0, 2) == "\xFF\xFE";
  }

  void Stop(bool& why) {
    why = true;
    xmlStopParser(parser_);
  }

  std::size_t Offset() const {
    return parser_->input->consumed + static_cast<std::size_t>(parser_->input->cur - parser_->input->base);
  }

  static void OnDoctype(void* self, const xmlChar*, const xmlChar*, const xmlChar*) {
    auto& reader = *static_cast<Reader*>(self);
    reader.Stop(reader.unusable_);
  }

  static void OnStart(void* self, const xmlChar* name, const xmlChar*, const xmlChar*, int, const xmlChar**,
                      int, int, const xmlChar**) {
    static_cast<Reader*>(self)->Start(name);
  }

  static void OnEnd(void* self, const xmlChar*, const xmlChar*, const xmlChar*) {
    static_cast<Reader*>(self)->End();
  }

  void Start(const xmlChar* name) {
    ++depth_;
    if (depth_ > kDeepestElement) return Stop(tooDeep_);
    if (depth_ == 1) {
      const auto* encoding = reinterpret_cast<const char*>(parser_->encoding);
      if (encoding != nullptr && strcasecmp(encoding, "UTF-8") != 0) return Stop(unusable_);
    }
    if (depth_ == 2) BeginChild();
    if (depth_ > 2) names_.insert(reinterpret_cast<const char*>(name));
  }

  // The parser stands behind the attributes, in front of ">" or "/>".
  void BeginChild() {
    names_.clear();
    const std::size_t close = text_.find_first_not_of(" \t\r\n", Offset());
    const bool known = close != std::string_view::npos && (text_[close] == '>' || text_[close] == '/');
    if (!known) return Stop(unusable_);
    begin_ = close + 1;
  }

  // The parser stands behind the end tag.
  void End() {
    if (depth_ == 2) EndChild();
    --depth_;
  }

  void EndChild() {
    const std::size_t child = children_++;
    if (names_.empty()) return;
    const std::size_t behind = Offset();
    if (behind > text_.size() || text_[behind - 1] != '>') return Stop(unusable_);
    const std::size_t end = text_.rfind("</", behind - 1);
    if (end == std::string_view::npos || end < begin_) return Stop(unusable_);
    if (end - begin_ < kSmallestCut) return;
    Cut cut{child, begin_, end, {}};
    for (const char* name : names_) cut.names.emplace(name);
    cuts_.push_back(std::move(cut));
  }

  std::string_view text_;
  xmlParserCtxtPtr parser_ = nullptr;
  int depth_ = 0;
  std::size_t children_ = 0;
  std::size_t begin_ = 0;
  std::unordered_set<const char*> names_;  // the parser keeps one copy of each name
  std::vector<Cut> cuts_;
  bool unusable_ = false;
  bool tooDeep_ = false;
};

}  // namespace

Outline ReadOutline(std::string_view text) {
  return Reader(text).Read();
}

}  // namespace MSXML2::libxml
