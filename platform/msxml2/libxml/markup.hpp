// A run of well-formed markup: a view of the bytes that a document was loaded from, or text of its own.
#pragma once

#include <cstddef>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace MSXML2::libxml {

class Markup {
 public:
  Markup() = default;
  // `piece` lies inside `source`; `names` are the local names of the elements inside.
  Markup(std::shared_ptr<const std::string> source, std::string_view piece,
         std::set<std::string, std::less<>> names)
      : source_(std::move(source)), fromSource_(piece), names_(std::move(names)) {}

  // Adds whole elements at the end; only for markup that is no view.
  void Append(std::string_view text);
  bool CanGrow() const { return source_ == nullptr; }

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
  bool HoldsElement(std::string_view name) const { return names_.find(name) != names_.end(); }

 private:
  std::shared_ptr<const std::string> source_;
  std::string_view fromSource_;
  std::vector<std::string> own_;
  std::set<std::string, std::less<>> names_;
  std::unordered_set<const char*> seen_;
};

}  // namespace MSXML2::libxml
