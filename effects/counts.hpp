// How many effects there were of each kind.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "effects/effect.hpp"
#include "platform/automation/error.hpp"

namespace effects {

// By kind ("row.delete") and by what the effect is about: table, folder, component (see SubjectOf). Rows are
// counted one by one, however many share a line; those of a transaction that was rolled back are not.
class Counts {
 public:
  struct Count {
    std::uint64_t done = 0;
    std::uint64_t failed = 0;   // surely did not take place
    std::uint64_t unknown = 0;  // failed, and may have taken place all the same
  };
  using Key = std::pair<std::string, std::string>;  // op, subject
  struct Less {
    using is_transparent = void;
    template <class Left, class Right>
    bool operator()(const Left& left, const Right& right) const {
      const int ops = std::string_view(left.first).compare(std::string_view(right.first));
      return ops != 0 ? ops < 0 : std::string_view(left.second) < std::string_view(right.second);
    }
  };

  // An effect counts as done until its failure is told.
  void Add(const Effect& effect);
  void AddFailure(const Effect& effect, automation::Outcome outcome);
  // An effect that counted as one turns out to be so many.
  void Recount(const Effect& effect, std::uint64_t items) { At(effect).done += items - 1; }
  void AddLogText(bool known) { ++(known ? knownLogTexts_ : logTexts_); }

  const std::map<Key, Count, Less>& All() const { return all_; }
  Count Of(std::string_view op) const;                  // whatever it is about
  std::uint64_t LogTexts() const { return logTexts_; }  // known ones not among them
  std::uint64_t KnownLogTexts() const { return knownLogTexts_; }

 private:
  Count& At(const Effect& effect);
  void EndTransaction(std::uint64_t Count::*becomes);

  std::map<Key, Count, Less> all_;
  // Of the transaction that is open.
  bool inTransaction_ = false;
  std::map<Key, std::uint64_t, Less> open_;
  std::uint64_t logTexts_ = 0;
  std::uint64_t knownLogTexts_ = 0;
};

}  // namespace effects
