// Translations that a session has met before: procedures send the same few texts again and again.
#pragma once

#include <memory>
#include <string>
#include <unordered_map>

#include "platform/adodb/engine/translation.hpp"

namespace ADODB::engine {

class TranslationMemo {
 public:
  std::shared_ptr<const Translation> Find(const std::string& text) const {
    const auto found = known_.find(text);
    return found == known_.end() ? nullptr : found->second;
  }

  // Long texts, and those that hold for one locale only, are not kept.
  void Keep(const std::string& text, std::shared_ptr<const Translation> translation) {
    if (text.size() > kLongestText || translation->usesLocale) return;
    if (known_.size() >= kMostTexts) known_.clear();
    known_.emplace(text, std::move(translation));
  }

 private:
  static constexpr std::size_t kLongestText = 2048;
  static constexpr std::size_t kMostTexts = 64;
  std::unordered_map<std::string, std::shared_ptr<const Translation>> known_;
};

}  // namespace ADODB::engine
