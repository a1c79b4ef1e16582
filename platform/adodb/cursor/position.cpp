#include "platform/adodb/cursor/position.hpp"

#include <algorithm>
#include <span>
#include <utility>

#include "platform/adodb/cursor/failure.hpp"

namespace ADODB::engine {

using automation::ErrorNumber;

Position::Position(SharedSession& session, RowSource& source, std::optional<std::vector<std::uint32_t>> shown)
    : session_(session),
      source_(source),
      searches_(session, source),
      reads_(source.Columns().size()),
      filter_(std::move(shown)) {}

void Position::GoTo(std::size_t place, bool fromFront) {
  place_ = place;
  fromFront_ = fromFront;
  LookUpAnew();
  currentGone_ = false;
  found_.reset();
  reads_.Forget();
}

void Position::LookUpAnew() {
  resolved_ = false;
  row_ = nullptr;
}

// The record is known to be there: its row is fetched when it is read.
void Position::StandOnKnown() {
  resolved_ = true;
  eof_ = bof_ = false;
}

bool Position::Exists() {
  return filter_ ? place_ < filter_->size() : source_.Reach(place_);
}

const Row* Position::RowAt(std::size_t ordinal) {
  std::span<const std::uint32_t> upcoming;
  if (filter_ && place_ < filter_->size()) upcoming = std::span(*filter_).subspan(place_);
  if (reads_.HasWritten() && source_.RereadsRows()) reads_.ReadFromDatabase(ordinal);
  return source_.At(ordinal, upcoming);
}

// Steps over records that are gone, to the one that is current or past the end.
void Position::Resolve() {
  if (resolved_) return;
  row_ = nullptr;
  for (;; ++place_) {
    eof_ = !Exists();
    if (eof_) break;
    if (source_.IsRemoved(Ordinal())) continue;
    row_ = RowAt(Ordinal());
    if (row_ != nullptr && (!filteredBy_ || Meets(*row_, *filteredBy_))) break;
    row_ = nullptr;
  }
  bof_ = eof_ && fromFront_;
  resolved_ = true;
}

bool Position::IsBof() {
  Resolve();
  return bof_;
}

bool Position::IsEof() {
  Resolve();
  return eof_;
}

void Position::MoveFirst() {
  source_.Rewind();
  GoTo(0, true);
  if (!Exists()) Fail(ErrorNumber::NoCurrentRecord);
}

void Position::MoveNext() {
  Resolve();
  if (eof_) Fail(ErrorNumber::NoCurrentRecord);
  GoTo(place_ + 1, false);
}

std::int64_t Position::Count() const {
  if (!filter_) return static_cast<std::int64_t>(source_.LeftCount());
  return std::count_if(filter_->begin(), filter_->end(),
                       [this](std::uint32_t ordinal) { return !source_.IsRemoved(ordinal); });
}

const Row& Position::Current() {
  Resolve();
  if (eof_ || currentGone_) Fail(ErrorNumber::NoCurrentRecord);
  if (row_ == nullptr) {
    row_ = RowAt(Ordinal());
    // The record that Find met may be another one by now.
    if (row_ != nullptr && found_ && !Meets(*row_, *found_)) row_ = nullptr;
    if (row_ == nullptr) Fail(ErrorNumber::NoCurrentRecord);
  }
  return *row_;
}

void Position::WasUpdated(const Row& row, const Changes& changes) {
  reads_.Wrote(Ordinal(), changes);
  row_ = &row;
  StandOnKnown();
  for (std::size_t i = 0; i < changes.size(); ++i) {
    if (changes[i]) searches_.Drop(i);
  }
}

void Position::WasDeleted() {
  source_.Remove(Ordinal());
  currentGone_ = true;
  row_ = nullptr;
}

void Position::WasAdded(std::size_t ordinal, const Row& row, std::size_t columns) {
  if (filter_) filter_->push_back(static_cast<std::uint32_t>(ordinal));
  GoTo(filter_ ? filter_->size() - 1 : ordinal, false);
  WasUpdated(row, Changes(columns, automation::Variant()));
}

bool Position::Meets(const Row& row, const Sought& sought) const {
  const Column& column = source_.Columns()[sought.column];
  return ComparisonBytes(row[sought.column], session_.GetDialect(), column) == sought.bytes;
}

// The place of the first record from the current one on that the index has.
std::optional<std::size_t> Position::PlaceOf(const ValueIndex& index, const Sought& sought) const {
  for (std::size_t from = filter_ ? Ordinal() : place_;;) {
    const auto found = index.FirstFrom(sought.value, from);
    if (!found) return std::nullopt;
    from = *found + 1u;
    if (source_.IsRemoved(*found)) continue;
    if (!filter_) return *found;
    const auto place = std::lower_bound(filter_->begin(), filter_->end(), *found);
    if (place != filter_->end() && *place == *found) {
      return static_cast<std::size_t>(place - filter_->begin());
    }
  }
}

void Position::Find(const Sought& sought) {
  // From the front nothing need be fetched; elsewhere there must be a current record to start from.
  const bool fromFront = !resolved_ && fromFront_ && place_ == 0;
  if (!fromFront) Resolve();
  if (fromFront ? !Exists() : eof_) Fail(ErrorNumber::NoCurrentRecord);
  // To make an index other rows are read, which may fail half way.
  LookUpAnew();
  // Under a filter the places are those of a list that was made from the index.
  std::size_t place = filter_ ? 0 : place_;
  const auto search = [&](const ValueIndex& index) {
    if (!filter_ && !fromFront) place_ = place;
    return PlaceOf(index, sought);
  };
  std::optional<std::size_t> found = search(searches_.IndexOf(sought.column, place));
  if (!found && !filter_ && searches_.MayHaveGained(sought.column, sought.value)) {
    place = place_;
    found = search(searches_.Requery(sought.column, place));
  }
  if (!found) {
    GoTo(filter_ ? filter_->size() : source_.KnownCount(), false);
    return;
  }
  GoTo(*found, false);
  StandOnKnown();
  found_ = sought;
}

void Position::SetFilter(const std::optional<Sought>& sought) {
  LookUpAnew();
  if (sought) {
    std::size_t place = 0;
    filter_ = searches_.IndexOf(sought->column, place).Find(sought->value);
  } else {
    filter_.reset();
  }
  filteredBy_ = sought;
  GoTo(0, true);
}

}  // namespace ADODB::engine
