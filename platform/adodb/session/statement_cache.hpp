// Translations that a session has met before: procedures send the same few texts again and again.
#pragma once

#include <memory>
#include <string>
#include <unordered_map>

#include "platform/adodb/sql/bound_values.hpp"
#include "platform/adodb/sql/translation.hpp"

namespace ADODB::engine {

class TranslationMemo {
 public:
  std::shared_ptr<const Translation> Find(const std::string& text) const {
    const auto found = known_.find(text);
    return found == known_.end() ? nullptr : found->second;
  }

  // The same for a statement whose values were bound, whatever its values are now.
  std::shared_ptr<const Translation> FindBound(const Statement& statement) {
    // A procedure that is called again and again sends the same statement each time.
    if (lastBound_ != nullptr && lastBound_->text.IsOf(statement)) return lastBound_->translation;
    const auto found = bound_.find(FixedText::Hash(statement));
    if (found == bound_.end() || !found->second.text.IsOf(statement)) return nullptr;
    lastBound_ = &found->second;
    return lastBound_->translation;
  }
  void KeepBound(const Statement& statement, const std::shared_ptr<const Translation>& translation) {
    if (translation->usesLocale) return;
    lastBound_ = nullptr;
    if (bound_.size() >= kMostTexts) bound_.clear();
    bound_.insert_or_assign(FixedText::Hash(statement), Bound{FixedText(statement), translation});
  }

  // Long texts, and those that hold for one locale only, are not kept.
  void Keep(const std::string& text, std::shared_ptr<const Translation> translation) {
    if (text.size() > kLongestText || translation->usesLocale) return;
    if (known_.size() >= kMostTexts) known_.clear();
    known_.emplace(text, std::move(translation));
  }

  Parameters values;  // of the statement that was prepared last; here because the memory serves all of them

 private:
  static constexpr std::size_t kLongestText = 2048;
  static constexpr std::size_t kMostTexts = 64;
  struct Bound {
    FixedText text;
    std::shared_ptr<const Translation> translation;
  };

  std::unordered_map<std::string, std::shared_ptr<const Translation>> known_;
  std::unordered_map<std::size_t, Bound> bound_;  // by FixedText::Hash
  const Bound* lastBound_ = nullptr;
};

}  // namespace ADODB::engine
