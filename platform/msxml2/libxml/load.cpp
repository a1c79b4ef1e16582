#include "platform/msxml2/libxml/load.hpp"

#include "platform/msxml2/libxml/parse.hpp"

namespace MSXML2::libxml {
namespace {

// A smaller document is not worth the second look.
constexpr std::size_t kKeepMarkupFrom = std::size_t{64} << 10;

std::string WithoutCuts(std::string_view text, const Outline& outline) {
  std::string rest;
  std::size_t from = 0;
  for (const Cut& cut : outline.cuts) {
    rest.append(text.substr(from, cut.begin - from));
    from = cut.end;
  }
  return rest.append(text.substr(from));
}

// The document with its large parts left as markup.
Loaded LoadLarge(const std::shared_ptr<const std::string>& bytes, const Outline& outline) {
  Parsed parsed = Parse(WithoutCuts(*bytes, outline), "UTF-8");
  if (!parsed.doc) return {nullptr, std::move(parsed.reason)};
  auto tree = std::make_shared<Tree>(std::move(parsed.doc));
  std::size_t child = 0;
  auto cut = outline.cuts.begin();
  for (xmlNodePtr node = xmlDocGetRootElement(tree->Doc())->children;
       node != nullptr && cut != outline.cuts.end(); node = node->next) {
    if (node->type != XML_ELEMENT_NODE) continue;
    if (child++ != cut->child) continue;
    const std::string_view piece = std::string_view(*bytes).substr(cut->begin, cut->end - cut->begin);
    tree->AddPlaceholder(node, Markup(bytes, piece, cut->names));
    ++cut;
  }
  return {std::move(tree), {}};
}

}  // namespace

std::shared_ptr<const Outline> LastLoaded::OutlineOf(std::shared_ptr<const std::string>& bytes) {
  if (std::shared_ptr<const std::string> known = bytes_.lock(); known && *known == *bytes) {
    bytes = std::move(known);
    return outline_;
  }
  outline_ = std::make_shared<const Outline>(ReadOutline(*bytes));
  bytes_ = bytes;
  return outline_;
}

Loaded Load(std::shared_ptr<const std::string> bytes, const char* encoding, LastLoaded& last) {
  Loaded loaded;
  std::shared_ptr<const Outline> outline;
  if (bytes->size() >= kKeepMarkupFrom && bytes->size() <= kLargestDocument) outline = last.OutlineOf(bytes);
  if (outline && outline->usable && !outline->wellFormed) return {nullptr, outline->reason};
  if (outline && outline->usable && !outline->cuts.empty()) {
    loaded = LoadLarge(bytes, *outline);
  } else {
    Parsed parsed = Parse(*bytes, encoding);
    loaded.reason = std::move(parsed.reason);
    if (parsed.doc) loaded.tree = std::make_shared<Tree>(std::move(parsed.doc));
  }
  if (loaded.tree) loaded.tree->SetSource(std::move(bytes));
  return loaded;
}

}  // namespace MSXML2::libxml
