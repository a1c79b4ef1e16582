#include "platform/adodb/cursor/keyed_rows.hpp"

#include <algorithm>
#include <numeric>
#include <unordered_map>
#include <utility>

namespace ADODB::engine {
namespace {

constexpr std::size_t kScatteredRows = 200;
constexpr std::size_t kCompositeRows = 50;

}  // namespace

KeyedRows::KeyedRows(std::shared_ptr<SharedSession> session, const SelectShape& select,
                     const TableShape& table, bool isDynamic, std::size_t mostRows)
    : session_(std::move(session)),
      statements_(session_->GetDialect(), select, table.keyColumns),
      isDynamic_(isDynamic),
      keyMoves_(table.address == TableShape::Address::Place),
      mostRows_(mostRows),
      listed_(!isDynamic || keyMoves_ || statements_.HasOrder()) {
  if (listed_ && mostRows_ == 0 && !statements_.HasOrder() && statements_.HasSubquery() &&
      session_->GetDialect().OrdersLongTextsOnDisk() && ReadShort()) {
    return;
  }
  if (statements_.HasOrder()) {
    ListKeys();
    TakeColumns(*Run(statements_.Page({}, 0)));
    return;
  }
  // What a run reads of a dynamic set is given up when it writes for the first time.
  if (isDynamic_) window_.StartSmall();
  ReadPage();
  if (listed_) ListKeys();
}

std::unique_ptr<Rows> KeyedRows::Run(const KeyedSelect::Query& query) const {
  return session_->Query(query.sql, query.parameters, statements_.Select().WholeTable());
}

// A keyset's rows grow old; a dynamic cursor's do so at once when the run writes.
bool KeyedRows::IsOutdated() const {
  const Freshness& freshness = session_->GetFreshness();
  return (isDynamic_ && freshness.WroteSince(window_.ReadAt())) || freshness.IsOld(window_.ReadAt());
}

// Rows that would be old before the walk reaches them are read in vain.
void KeyedRows::GrowWindow() {
  if (!session_->GetFreshness().IsAgeing(window_.ReadAt())) window_.Grow();
}

void KeyedRows::TakeColumns(const Rows& rows) {
  if (!columns_.empty()) return;
  columns_.assign(rows.Columns().begin(),
                  rows.Columns().end() - static_cast<std::ptrdiff_t>(statements_.KeyCount()));
}

// --- Learning of rows ---

// All rows at once, as they come, and then in order; false when that is too many, or not possible.
bool KeyedRows::ReadShort() {
  if (statements_.KeyCount() > 1) return false;
  const std::unique_ptr<Rows> rows = Run(statements_.Unordered(RowWindow::kMost + 1));
  if (rows->Columns().empty() || rows->Columns().back().type != ColumnType::Integer) return false;
  window_.Start(session_->GetFreshness().Now());
  TakeColumns(*rows);
  std::vector<Row> read;
  std::size_t bytes = 0;
  while (rows->Next()) {
    if (read.size() == RowWindow::kMost || bytes >= RowWindow::kMostBytes) return false;
    read.push_back(window_.Read(*rows, rows->Columns().size()));
    bytes += MemoryOf(read.back());
  }
  std::sort(read.begin(), read.end(), [](const Row& left, const Row& right) {
    return automation::ToInt64(left.back()) < automation::ToInt64(right.back());
  });
  for (Row& row : read) {
    const std::size_t ordinal = keys_.Size();
    keys_.Push(KeyOf(row), true);
    window_.Push(ordinal, std::move(row));
  }
  complete_ = true;
  return true;
}

// The next rows behind the known ones become known, and the window.
void KeyedRows::ReadPage() {
  std::size_t limit = window_.Limit();
  if (mostRows_ > 0) limit = std::min(limit, mostRows_ - keys_.Size());
  const std::unique_ptr<Rows> rows = Run(statements_.Page(keys_.Last(), limit));
  window_.Start(session_->GetFreshness().Now());
  const std::size_t count = rows->Columns().size();
  TakeColumns(*rows);
  while (!window_.IsFull()) {
    if (!rows->Next()) {
      complete_ = window_.Count() < limit;
      break;
    }
    Row row = window_.Read(*rows, count);
    const std::size_t ordinal = keys_.Size();
    keys_.Push(KeyOf(row), true);
    window_.Push(ordinal, std::move(row));
  }
  complete_ = complete_ || !MayKnowMore();
}

void KeyedRows::ReadKeys(const KeyedSelect::Query& query) {
  const std::unique_ptr<Rows> rows = Run(query);
  Row key(statements_.KeyCount());
  while (MayKnowMore() && rows->Next()) {
    for (std::size_t i = 0; i < key.size(); ++i) rows->ReadInto(i, key[i]);
    keys_.Push(key, !statements_.HasOrder());
  }
}

// The keys that are not known yet, in the order of the set.
void KeyedRows::ListKeys() {
  listed_ = true;
  if (statements_.HasOrder()) {
    ForgetFrom(0);
    ReadKeys(statements_.KeysInOrder());
  } else if (!complete_) {
    ReadKeys(statements_.KeysBehind(keys_.Last()));
  }
  complete_ = true;
}

void KeyedRows::ForgetFrom(std::size_t ordinal) {
  keys_.Truncate(ordinal);
  holes_.Truncate(ordinal);
  complete_ = false;
  window_.Start();
}

// --- Reading rows ---

void KeyedRows::Rewind() {
  if (listed_) return;
  const bool atFront = !window_.IsEmpty() && window_.First() == 0;
  if (!atFront || IsOutdated() || LeftCount() != KnownCount()) ForgetFrom(0);
}

bool KeyedRows::Reach(std::size_t ordinal) {
  if (ordinal < KnownCount()) return true;
  if (listed_ || !MayKnowMore()) return false;
  // Rows may have been added behind the last page.
  if (complete_ && !IsOutdated()) return false;
  do {
    if (IsOutdated()) {
      window_.StartSmall(ordinal);
    } else if (KnownCount() > 0) {
      GrowWindow();
    }
    ReadPage();
  } while (ordinal >= KnownCount() && !complete_);
  return ordinal < KnownCount();
}

const Row* KeyedRows::At(std::size_t ordinal, std::span<const std::uint32_t> upcoming) {
  const bool outdated = IsOutdated();
  if (!outdated) {
    if (const auto row = window_.Find(ordinal)) return *row;
  }
  const bool goesOn = !outdated && !window_.IsEmpty() && ordinal > window_.Last() &&
                      (!upcoming.empty() || ordinal == window_.Last() + 1);
  if (goesOn) {
    GrowWindow();
  } else if (outdated || upcoming.empty()) {
    window_.StartSmall(ordinal);
  }
  if (listed_) {
    Fetch(Wanted(ordinal, upcoming));
  } else {
    // The page that begins here, as the database has it now: what was known of the rows from here on is
    // forgotten.
    ForgetFrom(ordinal);
    ReadPage();
  }
  return window_.Find(ordinal).value_or(nullptr);
}

std::vector<std::size_t> KeyedRows::Wanted(std::size_t ordinal,
                                           std::span<const std::uint32_t> upcoming) const {
  const std::size_t sorted = keys_.SortedCount();
  std::size_t most = window_.Limit();
  if (!upcoming.empty() || ordinal >= sorted) most = std::min(most, kScatteredRows);
  if (statements_.KeyCount() > 1) most = std::min(most, kCompositeRows);
  if (!upcoming.empty()) {
    upcoming = upcoming.first(std::min(most, upcoming.size()));
    return {upcoming.begin(), upcoming.end()};
  }
  // Up to where the order of the keys ends: one window is read in one way.
  const std::size_t end = std::min(ordinal + most, ordinal < sorted ? sorted : KnownCount());
  std::vector<std::size_t> wanted(end - ordinal);
  std::iota(wanted.begin(), wanted.end(), ordinal);
  return wanted;
}

// Reads the rows at `ordinals`, ascending, into the window. A keyset's members are known: whatever the
// statement's condition says of a row now, a known key shows its row.
void KeyedRows::Fetch(std::vector<std::size_t> ordinals) {
  const bool ascending = ordinals.back() < keys_.SortedCount();
  const bool merge = ascending && keys_.List().IsNumeric();
  const std::unique_ptr<Rows> rows =
      Run(statements_.ByKeys(keys_.List(), ordinals, ascending, isDynamic_ || keyMoves_));
  window_.Start(session_->GetFreshness().Now());
  std::unordered_map<std::string, std::size_t> places;
  if (!merge) {
    for (std::size_t i = 0; i < ordinals.size(); ++i) places.emplace(keys_.BytesAt(ordinals[i]), i);
  }
  const std::size_t count = rows->Columns().size();
  TakeColumns(*rows);
  std::vector<Row> window(ordinals.size());
  std::size_t bytes = 0;
  std::size_t place = 0;
  while (rows->Next()) {
    // A window that is not filled in its order cannot be cut.
    if (ascending && bytes >= RowWindow::kMostBytes) {
      ordinals.resize(place + 1);
      window.resize(place + 1);
      break;
    }
    Row row = window_.Read(*rows, count);
    if (merge) {
      const std::int64_t key = automation::ToInt64(row.back());
      while (place < ordinals.size() && keys_.List().Number(ordinals[place]) < key) ++place;
      if (place == ordinals.size() || keys_.List().Number(ordinals[place]) != key) continue;
    } else {
      const auto found = places.find(KeyList::Bytes(KeyOf(row)));
      if (found == places.end()) continue;
      place = found->second;
    }
    bytes += MemoryOf(row);
    window[place] = std::move(row);
  }
  window_.Fill(std::move(ordinals), std::move(window));
}

// --- Changes through the set ---

std::size_t KeyedRows::Append(Row row) {
  // The place of an appended row is the end, wherever its key would sort. Its values are read when it becomes
  // current again: the database may hold them in another form than they were written in.
  const KeyView key = KeyOf(row);
  if (!listed_) {
    ListKeys();
    // It is in the database already, and may have been listed with the others.
    const std::string bytes = KeyList::Bytes(key);
    for (std::size_t at = KnownCount(); at-- > 0;) {
      if (keys_.BytesAt(at) == bytes) return at;
    }
  }
  keys_.Push(key, false);
  return KnownCount() - 1;
}

void KeyedRows::Replace(std::size_t ordinal, Row row) {
  window_.Drop(ordinal);
  // A dynamic cursor's pages go on behind the place where the row was met.
  if (!listed_) return;
  const KeyView key = KeyOf(row);
  if (keys_.BytesAt(ordinal) != KeyList::Bytes(key)) keys_.Change(ordinal, key);
}

bool KeyedRows::Holds(std::size_t column, const automation::Variant& value) const {
  const std::string sql = statements_.Select().Holding(columns_[column].baseColumn, session_->GetDialect());
  return session_->Query(sql, {value})->Next();
}

std::size_t KeyedRows::Requery(std::size_t ordinal, const Visit& visit) {
  const std::string key = ordinal < KnownCount() ? keys_.BytesAt(ordinal) : std::string();
  ForgetFrom(0);
  window_.StartLarge();
  // Pages come with their rows; only an order of its own takes the keys first.
  if (statements_.HasOrder()) {
    ListKeys();
  } else {
    listed_ = false;
  }
  std::size_t place = 0;
  bool found = false;
  for (std::size_t at = 0; Reach(at); ++at) {
    if (const Row* row = At(at, {})) visit(at, *row);
    if (!found && !key.empty() && at < KnownCount() && keys_.BytesAt(at) == key) {
      place = at;
      found = true;
    }
  }
  listed_ = complete_ = true;
  return found ? place : KnownCount();
}

}  // namespace ADODB::engine
