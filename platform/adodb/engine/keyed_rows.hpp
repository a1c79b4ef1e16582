// Rows of one table, held as a list of keys with a window of full rows.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/adodb/engine/key_list.hpp"
#include "platform/adodb/engine/link.hpp"
#include "platform/adodb/engine/row_source.hpp"
#include "platform/adodb/engine/select_shape.hpp"

namespace ADODB::engine {

// The rows stand in the order of the key. Of a fixed set (a keyset cursor) the keys are read when it is
// opened; of an open one (a dynamic cursor) page by page, as the walk reaches them, so that rows added ahead
// of it are met. Rows themselves are read again from the database, a window at a time: at most 1000 rows or
// about 4 MiB.
class KeyedRows : public RowSource {
 public:
  // `mostRows` 0 is no limit. `table` must have key columns.
  KeyedRows(std::shared_ptr<Link> link, SelectShape select, TableShape table, bool fixed,
            std::size_t mostRows);

  const std::vector<Column>& Columns() const override { return columns_; }
  bool Reach(std::size_t ordinal) override;
  std::size_t KnownCount() const override { return keys_.Size(); }
  const Row* At(std::size_t ordinal, std::span<const std::uint32_t> upcoming) override;
  std::size_t Append(Row row) override;
  void Replace(std::size_t ordinal, Row row) override;

  bool IsFixed() const { return fixed_; }

  // For an open set only.
  // What IsUnchanged compares with: whether nobody has changed the database since, as far as the engine can
  // tell.
  std::optional<std::int64_t> Mark() const;
  bool IsUnchanged(std::optional<std::int64_t> mark) const;
  // Whether the set as the database sees it now has a row whose `column` equals `value`; true when it cannot
  // be asked.
  bool Holds(const Column& column, const automation::Variant& value) const;
  // Forgets the keys, reads them all again, and gives the ordinal now at the key that `ordinal` had, or the
  // number of rows when it is gone.
  std::size_t ReadAgain(std::size_t ordinal);

 private:
  std::string Columned(const char* suffix) const;  // "k1 SUFFIX,k2 SUFFIX"
  std::string BehindLast(Parameters& parameters) const;
  void TakeColumns(const Rows& rows);
  bool ReadShort();
  void ReadPage();
  void ReadRemainingKeys();
  void PushKey(KeyView key);
  void Fetch(std::vector<std::size_t> ordinals);
  std::string WindowCondition(const std::vector<std::size_t>& ordinals, Parameters& parameters) const;
  const Row* InWindow(std::size_t ordinal, bool& inside) const;
  Row ReadRow(const Rows& rows, std::size_t count);
  KeyView KeyOf(const Row& row) const { return KeyView(row).subspan(columns_.size()); }

  std::shared_ptr<Link> link_;
  SelectShape select_;
  TableShape table_;
  std::vector<std::string> keyNames_;  // qualified and quoted
  bool fixed_;
  std::size_t mostRows_;

  std::vector<Column> columns_;
  KeyList keys_;
  Row lastKey_;  // of the last row read; pages go on behind it
  std::size_t sorted_ =
      0;  // keys before this ordinal are in key order; later ones were appended or changed here
  bool complete_ = false;  // all keys are known

  std::vector<std::size_t> windowOrdinals_;  // ascending
  std::vector<Row> window_;                  // an empty row is a hole
  std::vector<Row> spare_;                   // rows of the window before, for their memory
  std::size_t windowSize_;
};

}  // namespace ADODB::engine
