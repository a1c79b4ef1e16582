#include "effects/counts.hpp"

#include <variant>

namespace effects {
namespace {

bool IsOfRows(const Effect& effect) {
  return std::holds_alternative<RowChange>(effect) || std::holds_alternative<RowsChange>(effect);
}

}  // namespace

Counts::Count& Counts::At(const Effect& effect) {
  const std::pair key(OpOf(effect), SubjectOf(effect));
  if (const auto found = all_.find(key); found != all_.end()) return found->second;
  return all_[Key(key.first, key.second)];
}

void Counts::Add(const Effect& effect) {
  if (const auto* step = std::get_if<TransactionStep>(&effect)) {
    inTransaction_ = step->kind == TransactionStep::Kind::Begin;
    if (step->kind == TransactionStep::Kind::Rollback) EndTransaction(nullptr);
    if (inTransaction_) open_.clear();  // what a commit left, in case it failed
  }
  At(effect).done += CountOf(effect);
  if (inTransaction_ && IsOfRows(effect)) {
    open_[Key(OpOf(effect), SubjectOf(effect))] += CountOf(effect);
  }
}

void Counts::AddFailure(const Effect& effect, automation::Outcome outcome) {
  const bool unknown = outcome == automation::Outcome::Unknown;
  Count& count = At(effect);
  count.done -= CountOf(effect);
  (unknown ? count.unknown : count.failed) += CountOf(effect);
  const auto* step = std::get_if<TransactionStep>(&effect);
  if (step != nullptr && step->kind == TransactionStep::Kind::Commit && unknown) {
    EndTransaction(&Count::unknown);
  }
  if (step == nullptr && inTransaction_ && IsOfRows(effect)) {
    open_[Key(OpOf(effect), SubjectOf(effect))] -= CountOf(effect);
  }
}

void Counts::EndTransaction(std::uint64_t Count::*becomes) {
  for (const auto& [key, number] : open_) {
    Count& count = all_[key];
    count.done -= number;
    if (becomes != nullptr) count.*becomes += number;
  }
  open_.clear();
}

Counts::Count Counts::Of(std::string_view op) const {
  Count sum;
  for (const auto& [key, count] : all_) {
    if (key.first != op) continue;
    sum.done += count.done;
    sum.failed += count.failed;
    sum.unknown += count.unknown;
  }
  return sum;
}

}  // namespace effects
