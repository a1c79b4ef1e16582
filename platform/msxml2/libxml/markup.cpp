#include "platform/msxml2/libxml/markup.hpp"

namespace MSXML2::libxml {
namespace {

// One growing text would be copied, and be held twice, each time it outgrows its room.
constexpr std::size_t kPieceSize = std::size_t{1} << 20;

}  // namespace

void Markup::Append(std::string_view text) {
  if (own_.empty() || own_.back().size() + text.size() > own_.back().capacity()) {
    own_.emplace_back();
    own_.back().reserve(text.size() > kPieceSize ? text.size() : kPieceSize);
  }
  own_.back().append(text);
}

void Markup::AddName(const char* name) {
  if (seen_.insert(name).second) names_.emplace(name);
}

}  // namespace MSXML2::libxml
