// A run of well-formed markup: a view of the bytes that a document was loaded from, or text of its own.
#pragma once

#include <cstddef>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "platform/msxml2/libxml/names.hpp"

namespace MSXML2::libxml {

class Markup {
 public:
  Markup() = default;
  // `piece` lies inside `source`; `names` are the local names of the elements inside.
  Markup(std::shared_ptr<const std::string> source, std::string_view piece,
         std::set<std::string, std::less<>> names)
      : source_(std::move(source)), fromSource_(piece), names_(std::move(names)) {}

  // Adds whole elements at the end; only for markup that is no view.
  void Append(std::string_view text) { RoomFor(text.size()).append(text); }
  // The text to add `size` bytes of whole elements to, at its end; those are then a piece or a part of one.
  std::string& RoomFor(std::size_t size);
  // Takes back the last `size` bytes that were added, all of them of one RoomFor.
  void TakeBack(std::size_t size);
  bool CanGrow() const { return source_ == nullptr; }
  bool IsEmpty() const { return source_ == nullptr && own_.empty(); }

  // The markup in order, in pieces that are well-formed each.
  template <class Taker>
  void ForEachPiece(Taker&& take) const {
    if (source_) {
      take(fromSource_);
      return;
    }
    for (const std::string& piece : own_) take(std::string_view(piece));
  }

  // The local names of the elements inside. `name` must stay where it is: equal pointers are taken for equal
  // names.
  void AddName(const char* name);
  void AddNames(NameSet names) { nameBits_ |= names; }
  // Whether there may be elements of that name inside; `bit` is the name's.
  bool MayHold(std::string_view name, NameSet bit) const {
    return (nameBits_ & bit) != 0 || names_.find(name) != names_.end();
  }

 private:
  std::shared_ptr<const std::string> source_;
  std::string_view fromSource_;
  std::vector<std::string> own_;
  std::set<std::string, std::less<>> names_;
  std::unordered_set<const char*> seen_;
  NameSet nameBits_ = 0;
};

}  // namespace MSXML2::libxml
