#include "platform/msxml2/libxml/load.hpp"

#include "platform/msxml2/libxml/parse.hpp"

namespace MSXML2::libxml {

Loaded Load(std::shared_ptr<const std::string> bytes, const char* encoding) {
  Parsed parsed = Parse(*bytes, encoding);
  if (!parsed.doc) return {nullptr, std::move(parsed.reason)};
  auto tree = std::make_shared<Tree>(std::move(parsed.doc));
  tree->SetSource(std::move(bytes));
  return {std::move(tree), {}};
}

}  // namespace MSXML2::libxml
