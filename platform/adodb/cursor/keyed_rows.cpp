#include "platform/adodb/cursor/keyed_rows.hpp"

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace ADODB::engine {
namespace {

constexpr std::size_t kScatteredRows = 200;
constexpr std::size_t kCompositeRows = 50;
constexpr std::size_t kWindowBytes = std::size_t{4} * 1024 * 1024;

}  // namespace

KeyedRows::KeyedRows(std::shared_ptr<Link> link, const SelectShape& select, const TableShape& table,
                     bool fixed, std::size_t mostRows)
    : link_(std::move(link)),
      statements_(link_->GetSession().GetDialect(), select, table.keyColumns),
      fixed_(fixed),
      keyMoves_(table.address == TableShape::Address::Place),
      mostRows_(mostRows),
      listed_(fixed || keyMoves_ || statements_.HasOrder()) {
  if (listed_ && mostRows_ == 0 && !statements_.HasOrder() && statements_.HasSubquery() &&
      link_->GetSession().GetDialect().OrdersLongTextsOnDisk() && ReadShort()) {
    return;
  }
  if (statements_.HasOrder()) {
    ListKeys();
    TakeColumns(*Run(statements_.Page({}, 0)));
    return;
  }
  ReadPage();
  if (listed_) ListKeys();
}

std::unique_ptr<Rows> KeyedRows::Run(const KeyedSelect::Query& query) const {
  return link_->GetSession().Query(query.sql, query.parameters);
}

// Rows of a fixed set grow old; those of an open one do so at once when the run writes.
bool KeyedRows::IsOutdated() const {
  const Freshness& freshness = link_->GetFreshness();
  return (!fixed_ && freshness.WroteSince(readAt_)) || freshness.IsOld(readAt_);
}

// Rows that left the window lend their memory to those that enter it.
Row KeyedRows::ReadRow(const Rows& rows, std::size_t count) {
  Row row;
  while (row.empty() && !spare_.empty()) {
    row = std::move(spare_.back());
    spare_.pop_back();
  }
  row.resize(count);
  for (std::size_t i = 0; i < count; ++i) rows.Read(i, row[i]);
  return row;
}

void KeyedRows::TakeColumns(const Rows& rows) {
  if (!columns_.empty()) return;
  columns_.assign(rows.Columns().begin(),
                  rows.Columns().end() - static_cast<std::ptrdiff_t>(statements_.KeyCount()));
}

// All rows at once, as they come, and then in order; false when that is too many, or not possible.
bool KeyedRows::ReadShort() {
  if (statements_.KeyCount() > 1) return false;
  const std::unique_ptr<Rows> rows = Run(statements_.Unordered(WindowSize::kMost + 1));
  if (rows->Columns().empty() || rows->Columns().back().type != ColumnType::Integer) return false;
  readAt_ = link_->GetFreshness().Now();
  TakeColumns(*rows);
  const std::size_t count = rows->Columns().size();
  std::size_t bytes = 0;
  while (rows->Next()) {
    if (window_.size() == WindowSize::kMost || bytes >= kWindowBytes) {
      spare_ = std::exchange(window_, {});
      return false;
    }
    window_.push_back(ReadRow(*rows, count));
    bytes += MemoryOf(window_.back());
  }
  std::sort(window_.begin(), window_.end(), [](const Row& left, const Row& right) {
    return automation::ToInt64(left.back()) < automation::ToInt64(right.back());
  });
  for (const Row& row : window_) {
    windowOrdinals_.push_back(keys_.Size());
    PushKey(KeyOf(row));
  }
  complete_ = true;
  return true;
}

// The next rows behind the known ones become known, and the window.
void KeyedRows::ReadPage() {
  std::size_t limit = windowSize_.Rows();
  if (mostRows_ > 0) limit = std::min(limit, mostRows_ - keys_.Size());
  const std::unique_ptr<Rows> rows = Run(statements_.Page(lastKey_, limit));
  readAt_ = link_->GetFreshness().Now();
  const std::size_t count = rows->Columns().size();
  TakeColumns(*rows);
  windowOrdinals_.clear();
  spare_ = std::exchange(window_, {});
  std::size_t bytes = 0;
  while (bytes < kWindowBytes) {
    if (!rows->Next()) {
      complete_ = window_.size() < limit;
      break;
    }
    Row row = ReadRow(*rows, count);
    bytes += MemoryOf(row);
    windowOrdinals_.push_back(keys_.Size());
    PushKey(KeyOf(row));
    window_.push_back(std::move(row));
  }
  complete_ = complete_ || (mostRows_ > 0 && keys_.Size() >= mostRows_);
  if (keys_.Size() > 0) lastKey_ = keys_.Get(keys_.Size() - 1);
}

void KeyedRows::PushKey(KeyView key) {
  if (sorted_ == keys_.Size() && !statements_.HasOrder()) ++sorted_;
  keys_.Push(key);
}

void KeyedRows::ReadKeys(const KeyedSelect::Query& query) {
  const std::unique_ptr<Rows> rows = Run(query);
  Row key(statements_.KeyCount());
  while ((mostRows_ == 0 || keys_.Size() < mostRows_) && rows->Next()) {
    for (std::size_t i = 0; i < key.size(); ++i) rows->Read(i, key[i]);
    PushKey(key);
  }
}

// The keys that are not known yet, in the order of the set.
void KeyedRows::ListKeys() {
  listed_ = true;
  if (statements_.HasOrder()) {
    StartPages();
    ReadKeys(statements_.KeysInOrder());
  } else if (!complete_) {
    ReadKeys(statements_.KeysBehind(lastKey_));
  }
  complete_ = true;
}

// Nothing is known any more.
void KeyedRows::StartPages() {
  keys_.Clear();
  holes_.Truncate(0);
  lastKey_.clear();
  sorted_ = 0;
  complete_ = false;
  windowOrdinals_.clear();
  spare_ = std::exchange(window_, {});
}

void KeyedRows::Rewind() {
  if (listed_) return;
  const bool atFront = !windowOrdinals_.empty() && windowOrdinals_.front() == 0;
  if (!atFront || IsOutdated() || LeftCount() != KnownCount()) StartPages();
}

bool KeyedRows::Reach(std::size_t ordinal) {
  if (ordinal < KnownCount()) return true;
  if (listed_ || (mostRows_ > 0 && KnownCount() >= mostRows_)) return false;
  // Rows may have been added behind the last page.
  if (complete_ && !IsOutdated()) return false;
  do {
    if (IsOutdated()) {
      windowSize_.StartSmall();
    } else if (KnownCount() > 0) {
      windowSize_.Grow();
    }
    ReadPage();
  } while (ordinal >= KnownCount() && !complete_);
  return ordinal < KnownCount();
}

const Row* KeyedRows::InWindow(std::size_t ordinal, bool& inside) const {
  inside = false;
  if (windowOrdinals_.empty() || ordinal < windowOrdinals_.front() || ordinal > windowOrdinals_.back())
    return nullptr;
  // Most windows are without gaps.
  std::size_t place = ordinal - windowOrdinals_.front();
  if (place >= windowOrdinals_.size() || windowOrdinals_[place] != ordinal) {
    const auto found = std::lower_bound(windowOrdinals_.begin(), windowOrdinals_.end(), ordinal);
    if (*found != ordinal) return nullptr;
    place = static_cast<std::size_t>(found - windowOrdinals_.begin());
  }
  inside = true;
  const Row& row = window_[place];
  return row.empty() ? nullptr : &row;
}

const Row* KeyedRows::At(std::size_t ordinal, std::span<const std::uint32_t> upcoming) {
  const bool outdated = IsOutdated();
  bool inside = false;
  if (!outdated) {
    const Row* row = InWindow(ordinal, inside);
    if (inside) return row;
  }
  const bool goesOn = !outdated && !windowOrdinals_.empty() && ordinal > windowOrdinals_.back() &&
                      (!upcoming.empty() || ordinal == windowOrdinals_.back() + 1);
  if (goesOn) {
    windowSize_.Grow();
  } else if (outdated || upcoming.empty()) {
    windowSize_.StartSmall();
  }
  if (!listed_) return TurnTo(ordinal);
  Fetch(Wanted(ordinal, upcoming));
  return InWindow(ordinal, inside);
}

// The page that begins at `ordinal`, as the database has it now: what was known of the rows from there on is
// forgotten.
const Row* KeyedRows::TurnTo(std::size_t ordinal) {
  keys_.Truncate(ordinal);
  holes_.Truncate(ordinal);
  sorted_ = std::min(sorted_, ordinal);
  lastKey_.clear();
  if (ordinal > 0) lastKey_ = keys_.Get(ordinal - 1);
  complete_ = false;
  ReadPage();
  bool inside = false;
  return InWindow(ordinal, inside);
}

std::vector<std::size_t> KeyedRows::Wanted(std::size_t ordinal, std::span<const std::uint32_t> upcoming) {
  std::vector<std::size_t> wanted;
  std::size_t most = windowSize_.Rows();
  if (!upcoming.empty() || ordinal >= sorted_) most = std::min(most, kScatteredRows);
  if (statements_.KeyCount() > 1) most = std::min(most, kCompositeRows);
  if (!upcoming.empty()) {
    for (const std::uint32_t next : upcoming.first(std::min(most, upcoming.size()))) wanted.push_back(next);
  } else {
    // Up to where the order of the keys ends: one window is read in one way.
    const std::size_t end = ordinal < sorted_ ? sorted_ : KnownCount();
    for (std::size_t i = ordinal; i < end && wanted.size() < most; ++i) wanted.push_back(i);
  }
  return wanted;
}

// Reads the rows at `ordinals`, ascending, into the window. Membership of a fixed set is fixed: whatever the
// statement's condition says of a row now, a known key shows its row.
void KeyedRows::Fetch(std::vector<std::size_t> ordinals) {
  const bool ascending = ordinals.back() < sorted_;
  const bool merge = ascending && keys_.IsNumeric();
  const std::unique_ptr<Rows> rows =
      Run(statements_.ByKeys(keys_, ordinals, ascending, !fixed_ || keyMoves_));
  readAt_ = link_->GetFreshness().Now();
  std::unordered_map<std::string, std::size_t> places;
  if (!merge) {
    for (std::size_t i = 0; i < ordinals.size(); ++i) places.emplace(BytesAt(ordinals[i]), i);
  }
  spare_ = std::exchange(window_, {});
  windowOrdinals_.clear();
  std::vector<Row> window(ordinals.size());
  std::size_t bytes = 0;
  std::size_t place = 0;
  const std::size_t count = rows->Columns().size();
  TakeColumns(*rows);
  bool cut = false;
  while (rows->Next()) {
    // A window that is not filled in its order cannot be cut.
    if (ascending && bytes >= kWindowBytes) {
      cut = true;
      break;
    }
    Row row = ReadRow(*rows, count);
    if (merge) {
      const std::int64_t key = automation::ToInt64(row.back());
      while (place < ordinals.size() && keys_.Number(ordinals[place]) < key) ++place;
      if (place == ordinals.size() || keys_.Number(ordinals[place]) != key) continue;
    } else {
      const auto found = places.find(KeyList::Bytes(KeyOf(row)));
      if (found == places.end()) continue;
      place = found->second;
    }
    bytes += MemoryOf(row);
    window[place] = std::move(row);
  }
  if (cut) {
    ordinals.resize(place + 1);
    window.resize(place + 1);
  }
  windowOrdinals_ = std::move(ordinals);
  window_ = std::move(window);
}

void KeyedRows::DropFromWindow(std::size_t ordinal) {
  const auto found = std::lower_bound(windowOrdinals_.begin(), windowOrdinals_.end(), ordinal);
  if (found == windowOrdinals_.end() || *found != ordinal) return;
  window_.erase(window_.begin() + (found - windowOrdinals_.begin()));
  windowOrdinals_.erase(found);
}

std::size_t KeyedRows::Append(Row row) {
  // The place of an appended row is the end, wherever its key would sort. Its values are read when it becomes
  // current again: the database may hold them in another form than they were written in.
  const KeyView key = KeyOf(row);
  if (!listed_) {
    ListKeys();
    // It is in the database already, and may have been listed with the others.
    const std::string bytes = KeyList::Bytes(key);
    for (std::size_t at = KnownCount(); at-- > 0;) {
      if (BytesAt(at) == bytes) return at;
    }
  }
  keys_.Push(key);
  return KnownCount() - 1;
}

void KeyedRows::Replace(std::size_t ordinal, Row row) {
  DropFromWindow(ordinal);
  // The pages of an open set go on behind the place where the row was met.
  if (!listed_) return;
  const KeyView key = KeyOf(row);
  if (BytesAt(ordinal) == KeyList::Bytes(key)) return;
  keys_.Set(ordinal, key);
  sorted_ = std::min(sorted_, ordinal);
}

std::string KeyedRows::BytesAt(std::size_t ordinal) const {
  return KeyList::Bytes(keys_.Get(ordinal));
}

std::size_t KeyedRows::ReadAgain(std::size_t ordinal, const Visit& visit) {
  const std::string key = ordinal < KnownCount() ? BytesAt(ordinal) : std::string();
  StartPages();
  windowSize_ = {};
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
    if (!found && !key.empty() && at < KnownCount() && BytesAt(at) == key) {
      place = at;
      found = true;
    }
  }
  listed_ = complete_ = true;
  return found ? place : KnownCount();
}

}  // namespace ADODB::engine
