#include "platform/adodb/cursor/keyless_rows.hpp"

#include <utility>

#include "platform/adodb/cursor/key_list.hpp"
#include "platform/adodb/cursor/still_reads.hpp"

namespace ADODB::engine {

KeylessRows::KeylessRows(std::shared_ptr<SharedSession> session, SelectShape select, const TableShape& table,
                         bool isDynamic, std::size_t mostRows)
    : session_(std::move(session)),
      select_(std::move(select)),
      list_(select_.ListWithKey(table, session_->GetDialect())),
      keyCount_(table.keyColumns.size()),
      isDynamic_(isDynamic),
      mostRows_(mostRows) {
  Copy();
}

void KeylessRows::Copy() {
  const std::unique_ptr<Rows> rows =
      session_->Query("SELECT " + list_ + select_.From({}) + " " + select_.order, {}, select_.WholeTable());
  copiedAt_ = session_->GetFreshness().Now();
  copy_ = std::make_unique<StaticRows>(*rows, keyCount_, mostRows_);
  if (!columns_.empty()) return;
  columns_ = copy_->Columns();
  keyColumns_ = copy_->KeyColumns();
}

bool KeylessRows::IsOutdated(const Freshness::Stamp& stamp) const {
  const Freshness& freshness = session_->GetFreshness();
  return (isDynamic_ && freshness.WroteSince(stamp)) || freshness.IsOld(stamp);
}

const Row* KeylessRows::At(std::size_t ordinal, std::span<const std::uint32_t> upcoming) {
  const Row* row = copy_->At(ordinal, upcoming);
  return row == nullptr || !IsOutdated(copiedAt_) || IsStillThere(*row) ? row : nullptr;
}

bool KeylessRows::IsStillThere(const Row& row) const {
  const Dialect& dialect = session_->GetDialect();
  Parameters parameters;
  std::string condition;
  for (std::size_t i = 0; i < keyCount_; ++i) {
    const StillReads stillReads(dialect, KeyColumns()[i]);
    condition += (i == 0 ? "" : " AND ") + stillReads.condition;
    stillReads.Bind(dialect, row[Columns().size() + i], parameters);
  }
  SelectShape table = select_;
  if (!isDynamic_) table.condition.clear();
  return session_->Query(dialect.Limited("1", table.From(condition), 1), parameters)->Next();
}

bool KeylessRows::Holds(std::size_t column, const automation::Variant& value) const {
  const std::string sql = select_.Holding(Columns()[column].baseColumn, session_->GetDialect());
  return session_->Query(sql, {value})->Next();
}

std::size_t KeylessRows::Requery(std::size_t ordinal, const Visit& visit) {
  std::string before;
  const auto bytes = [&](std::size_t at) {
    return KeyList::Bytes(KeyView(*copy_->At(at, {})).subspan(Columns().size()));
  };
  if (ordinal < KnownCount()) before = bytes(ordinal);
  Copy();
  holes_.Truncate(0);
  std::size_t place = KnownCount();
  for (std::size_t at = 0; Reach(at); ++at) {
    visit(at, *copy_->At(at, {}));
    if (place == KnownCount() && !before.empty() && bytes(at) == before) place = at;
  }
  return place;
}

}  // namespace ADODB::engine
