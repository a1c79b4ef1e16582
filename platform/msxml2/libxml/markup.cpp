#include "platform/msxml2/libxml/markup.hpp"

#include <algorithm>

namespace MSXML2::libxml {
namespace {

// One growing text would be copied, and be held twice, each time it outgrows its room.
constexpr std::size_t kSmallestPiece = std::size_t{1} << 15;
constexpr std::size_t kLargestPiece = std::size_t{1} << 20;

}  // namespace

std::string& Markup::RoomFor(std::size_t size) {
  if (own_.empty() || own_.back().size() + size > own_.back().capacity()) {
    const std::size_t usual =
        own_.empty() ? kSmallestPiece : std::min(2 * own_.back().capacity(), kLargestPiece);
    std::string piece;
    piece.reserve(std::max(size, usual));
    own_.push_back(std::move(piece));
  }
  return own_.back();
}

void Markup::TakeBack(std::size_t size) {
  own_.back().resize(own_.back().size() - size);
  if (own_.back().empty()) own_.pop_back();
}

void Markup::AddName(const char* name) {
  if (seen_.insert(name).second) names_.emplace(name);
}

}  // namespace MSXML2::libxml
