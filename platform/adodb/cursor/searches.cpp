#include "platform/adodb/cursor/searches.hpp"

namespace ADODB::engine {

const ValueIndex& Searches::IndexOf(std::size_t column, std::size_t& place) {
  if (const auto found = indexes_.find(column); found != indexes_.end()) return found->second;
  if (source_.IsDynamic() && !placesKept_) return Requery(column, place);
  ValueIndex values(session_.GetDialect(), source_.Columns()[column]);
  for (std::size_t ordinal = 0; source_.Reach(ordinal); ++ordinal) {
    if (source_.IsRemoved(ordinal)) continue;
    if (const Row* row = source_.At(ordinal, {})) values.Add(ordinal, (*row)[column]);
  }
  values.Finish();
  return indexes_.emplace(column, std::move(values)).first->second;
}

const ValueIndex& Searches::Requery(std::size_t column, std::size_t& place) {
  indexes_.clear();
  placesKept_ = false;  // unless all rows are read
  // Before the rows are read: what comes in meanwhile must not count as known.
  mark_ = session_.GetSession().ChangeMark();
  questions_ = 0;
  ValueIndex values(session_.GetDialect(), source_.Columns()[column]);
  place =
      source_.Requery(place, [&](std::size_t ordinal, const Row& row) { values.Add(ordinal, row[column]); });
  placesKept_ = true;
  values.Finish();
  return indexes_.emplace(column, std::move(values)).first->second;
}

bool Searches::MayHaveGained(std::size_t column, const automation::Variant& wanted) {
  constexpr int kMostQuestions = 1000;
  if (!source_.IsDynamic()) return false;
  if (mark_ && session_.GetSession().ChangeMark() == mark_) return false;
  return ++questions_ > kMostQuestions || source_.Columns()[column].baseColumn.empty() ||
         source_.Holds(column, wanted);
}

}  // namespace ADODB::engine
