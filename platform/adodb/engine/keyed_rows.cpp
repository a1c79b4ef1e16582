#include "platform/adodb/engine/keyed_rows.hpp"

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "platform/adodb/engine/sql_tokens.hpp"

namespace ADODB::engine {
namespace {

constexpr std::size_t kPageRows = 1000;
constexpr std::size_t kFirstWindowRows = 32;
constexpr std::size_t kScatteredRows = 200;
constexpr std::size_t kCompositeRows = 50;
constexpr std::size_t kWindowBytes = std::size_t{4} * 1024 * 1024;

// Or a text that looks like one, which does no harm.
bool HoldsSubquery(std::string_view condition) {
  constexpr std::string_view kSelect = "select";
  for (std::size_t at = 0; at + kSelect.size() <= condition.size(); ++at) {
    if (EqualsIgnoringAsciiCase(condition.substr(at, kSelect.size()), kSelect)) return true;
  }
  return false;
}

}  // namespace

KeyedRows::KeyedRows(std::shared_ptr<Link> link, SelectShape select, TableShape table, bool fixed,
                     std::size_t mostRows)
    : link_(std::move(link)),
      select_(std::move(select)),
      table_(std::move(table)),
      fixed_(fixed),
      mostRows_(mostRows),
      windowSize_(kPageRows) {
  const Dialect& dialect = link_->GetSession().GetDialect();
  for (const std::string& column : table_.keyColumns) {
    keyNames_.push_back(select_.name + "." + dialect.QuotedName(column));
  }
  // A condition with a subquery: the rows do not come in the order of the key by themselves.
  const bool chosenElsewhere = HoldsSubquery(select_.condition);
  if (fixed_ && mostRows_ == 0 && chosenElsewhere && dialect.OrdersLongTextsOnDisk() && ReadShort()) return;
  ReadPage();
  if (fixed_ && !complete_) ReadRemainingKeys();
}

std::string KeyedRows::Columned(const char* suffix) const {
  std::string list;
  for (const std::string& name : keyNames_) list += (list.empty() ? "" : ",") + name + suffix;
  return list;
}

// "k1 > ?", or "k1 >= ? AND (k1 > ? OR (k1 = ? AND (k2 > ?)))": the first term says nothing new, but it is
// the one by which planners enter the key's index in the middle. No condition at the start.
std::string KeyedRows::BehindLast(Parameters& parameters) const {
  const Row& key = lastKey_;
  std::string condition;
  std::string closing;
  if (key.size() > 1) {
    condition = keyNames_[0] + " >= ? AND ";
    parameters.push_back(key[0]);
  }
  for (std::size_t i = 0; i < key.size(); ++i) {
    condition += "(" + keyNames_[i] + " > ?";
    parameters.push_back(key[i]);
    closing += ")";
    if (i + 1 < key.size()) {
      condition += " OR (" + keyNames_[i] + " = ? AND ";
      parameters.push_back(key[i]);
      closing += ")";
    }
  }
  return condition + closing;
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
                  rows.Columns().end() - static_cast<std::ptrdiff_t>(keyNames_.size()));
}

// All rows at once, as they come, and then in order; false when that is too many, or not possible.
bool KeyedRows::ReadShort() {
  Session& session = link_->GetSession();
  if (keyNames_.size() > 1) return false;
  const std::unique_ptr<Rows> rows = session.Query(
      session.GetDialect().Limited(select_.list + "," + Columned(""), select_.From({}), kPageRows + 1), {});
  if (rows->Columns().empty() || rows->Columns().back().type != ColumnType::Integer) return false;
  TakeColumns(*rows);
  const std::size_t count = rows->Columns().size();
  std::size_t bytes = 0;
  while (rows->Next()) {
    if (window_.size() == kPageRows || bytes >= kWindowBytes) {
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
  if (keys_.Size() > 0) lastKey_ = keys_.Get(keys_.Size() - 1);
  return true;
}

// The next rows behind the known ones become known, and the window.
void KeyedRows::ReadPage() {
  Session& session = link_->GetSession();
  std::size_t limit = kPageRows;
  if (mostRows_ > 0) limit = std::min(limit, mostRows_ - keys_.Size());
  Parameters parameters;
  const std::string condition = BehindLast(parameters);
  const std::string sql = session.GetDialect().Limited(
      select_.list + "," + Columned(""), select_.From(condition) + " ORDER BY " + Columned(""), limit);
  const std::unique_ptr<Rows> rows = session.Query(sql, parameters);
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
  if (sorted_ == keys_.Size()) ++sorted_;
  keys_.Push(key);
}

void KeyedRows::ReadRemainingKeys() {
  Session& session = link_->GetSession();
  Parameters parameters;
  const std::string condition = BehindLast(parameters);
  const std::unique_ptr<Rows> rows = session.Query(
      "SELECT " + Columned("") + select_.From(condition) + " ORDER BY " + Columned(""), parameters);
  Row key(keyNames_.size());
  while ((mostRows_ == 0 || keys_.Size() < mostRows_) && rows->Next()) {
    for (std::size_t i = 0; i < key.size(); ++i) rows->Read(i, key[i]);
    PushKey(key);
  }
  complete_ = true;
}

bool KeyedRows::Reach(std::size_t ordinal) {
  while (ordinal >= KnownCount()) {
    if (complete_) return false;
    ReadPage();
  }
  return true;
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
  bool inside = false;
  const Row* row = InWindow(ordinal, inside);
  if (inside) return row;
  std::vector<std::size_t> wanted;
  if (ordinal >= sorted_) {
    wanted.push_back(ordinal);
  } else if (!upcoming.empty()) {
    const std::size_t most = keyNames_.size() > 1 ? kCompositeRows : kScatteredRows;
    for (const std::uint32_t next : upcoming) {
      if (wanted.size() < most && next < sorted_) wanted.push_back(next);
    }
  } else {
    const bool goesOn = !windowOrdinals_.empty() && ordinal == windowOrdinals_.back() + 1;
    windowSize_ = goesOn ? std::min(windowSize_ * 2, kPageRows) : kFirstWindowRows;
    std::size_t most = windowSize_;
    if (keyNames_.size() > 1) most = std::min(most, kCompositeRows);
    for (std::size_t i = ordinal; i < sorted_ && wanted.size() < most; ++i) wanted.push_back(i);
  }
  Fetch(std::move(wanted));
  return InWindow(ordinal, inside);
}

std::string KeyedRows::WindowCondition(const std::vector<std::size_t>& ordinals,
                                       Parameters& parameters) const {
  const std::size_t first = ordinals.front();
  const std::size_t last = ordinals.back();
  if (keyNames_.size() > 1) {
    std::string condition;
    for (const std::size_t ordinal : ordinals) {
      condition += condition.empty() ? "(" : " OR (";
      const Row key = keys_.Get(ordinal);
      for (std::size_t i = 0; i < key.size(); ++i) {
        condition += (i == 0 ? "" : " AND ") + keyNames_[i] + " = ?";
        parameters.push_back(key[i]);
      }
      condition += ")";
    }
    return condition;
  }
  // Between keys that lie close together little else can stand, and a range is read fastest.
  const bool together = last - first + 1 == ordinals.size();
  const bool close = together && (select_.condition.empty() ||
                                  (keys_.IsNumeric() && keys_.Number(last) - keys_.Number(first) <=
                                                            static_cast<std::int64_t>(4 * ordinals.size())));
  if (ordinals.size() > 1 && close) {
    parameters.push_back(keys_.Get(first).front());
    parameters.push_back(keys_.Get(last).front());
    return keyNames_.front() + " >= ? AND " + keyNames_.front() + " <= ?";
  }
  std::string condition = keyNames_.front() + " IN (";
  for (const std::size_t ordinal : ordinals) {
    condition += parameters.empty() ? "?" : ",?";
    parameters.push_back(keys_.Get(ordinal).front());
  }
  return condition + ")";
}

// Reads the rows at `ordinals`, ascending, into the window. Membership is fixed: whatever the statement's
// condition says of a row now, a known key shows its row.
void KeyedRows::Fetch(std::vector<std::size_t> ordinals) {
  Session& session = link_->GetSession();
  Parameters parameters;
  SelectShape byKey = select_;
  byKey.condition.clear();
  const std::string condition = WindowCondition(ordinals, parameters);
  const std::unique_ptr<Rows> rows = session.Query(
      "SELECT " + select_.list + "," + Columned("") + byKey.From(condition) + " ORDER BY " + Columned(""),
      parameters);
  std::unordered_map<std::string, std::size_t> places;
  if (!keys_.IsNumeric()) {
    for (std::size_t i = 0; i < ordinals.size(); ++i)
      places.emplace(KeyList::Bytes(keys_.Get(ordinals[i])), i);
  }
  spare_ = std::exchange(window_, {});
  windowOrdinals_.clear();
  std::vector<Row> window(ordinals.size());
  std::size_t bytes = 0;
  std::size_t place = 0;
  const std::size_t count = rows->Columns().size();
  bool cut = false;
  while (rows->Next()) {
    if (bytes >= kWindowBytes) {
      cut = true;
      break;
    }
    Row row = ReadRow(*rows, count);
    if (keys_.IsNumeric()) {
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

std::size_t KeyedRows::Append(Row row) {
  // The place of an appended row is the end, wherever its key would sort.
  while (Reach(KnownCount())) {
  }
  keys_.Push(KeyOf(row));
  windowOrdinals_.assign(1, KnownCount() - 1);
  window_.clear();
  window_.push_back(std::move(row));
  return KnownCount() - 1;
}

void KeyedRows::Replace(std::size_t ordinal, Row row) {
  const KeyView key = KeyOf(row);
  if (KeyList::Bytes(keys_.Get(ordinal)) != KeyList::Bytes(key)) {
    keys_.Set(ordinal, key);
    // Its key may no longer stand in order: from here on, rows are fetched one by one.
    sorted_ = std::min(sorted_, ordinal);
  }
  const auto found = std::lower_bound(windowOrdinals_.begin(), windowOrdinals_.end(), ordinal);
  if (found == windowOrdinals_.end() || *found != ordinal) return;
  window_[static_cast<std::size_t>(found - windowOrdinals_.begin())] = std::move(row);
}

std::optional<std::int64_t> KeyedRows::Mark() const {
  return link_->GetSession().ChangeMark();
}

bool KeyedRows::IsUnchanged(std::optional<std::int64_t> mark) const {
  return mark && link_->GetSession().ChangeMark() == mark;
}

bool KeyedRows::Holds(const Column& column, const automation::Variant& value) const {
  Session& session = link_->GetSession();
  if (column.baseColumn.empty()) return true;
  const std::string condition =
      select_.name + "." + session.GetDialect().QuotedName(column.baseColumn) + " = ?";
  return session.Query("SELECT " + keyNames_.front() + select_.From(condition), {value})->Next();
}

std::size_t KeyedRows::ReadAgain(std::size_t ordinal) {
  std::string key;
  if (ordinal < KnownCount()) key = KeyList::Bytes(keys_.Get(ordinal));
  keys_.Clear();
  lastKey_.clear();
  sorted_ = 0;
  complete_ = false;
  while (Reach(KnownCount())) {
  }
  std::size_t place = 0;
  while (place < KnownCount() && KeyList::Bytes(keys_.Get(place)) != key) ++place;
  return place;
}

}  // namespace ADODB::engine
