// Where a record set stands, and which of its records it shows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/adodb/cursor/read_columns.hpp"
#include "platform/adodb/cursor/row_source.hpp"
#include "platform/adodb/cursor/searches.hpp"
#include "platform/adodb/session/shared_session.hpp"

namespace ADODB::engine {

// What records are searched by: a value of a column.
struct Sought {
  std::size_t column = 0;
  automation::Variant value;
  std::string bytes;  // ComparisonBytes of the value
};

// A move only notes where to go; what is there is looked at when somebody asks, so that a search that starts
// from the front need not fetch the front. Raises 3021 as Recordset's members do.
class Position {
 public:
  // Stands on the first record. The session and the source must outlive the position. `shown` holds the
  // ordinals to show, ascending or not, where they are not all.
  Position(SharedSession& session, RowSource& source,
           std::optional<std::vector<std::uint32_t>> shown = std::nullopt);

  bool IsBof();
  bool IsEof();
  void MoveFirst();
  void MoveNext();
  void Find(const Sought& sought);
  void SetFilter(const std::optional<Sought>& sought);
  std::int64_t Count() const;

  // The current record. The reference holds until the next call of any other member.
  const Row& Current();
  std::size_t Ordinal() const { return filter_ ? (*filter_)[place_] : place_; }
  ReadColumns& Reads() { return reads_; }

  // The current record was changed or deleted through the set; it shows `row` until the set moves.
  void WasUpdated(const Row& row, const Changes& changes);
  void WasDeleted();
  // A record was added through the set, and is the current one now.
  void WasAdded(std::size_t ordinal, const Row& row, std::size_t columns);

 private:
  void GoTo(std::size_t place, bool fromFront);
  void StandOnKnown();
  void LookUpAnew();
  bool Exists();
  void Resolve();
  const Row* RowAt(std::size_t ordinal);
  bool Meets(const Row& row, const Sought& sought) const;
  std::optional<std::size_t> PlaceOf(const ValueIndex& index, const Sought& sought) const;

  SharedSession& session_;
  RowSource& source_;
  Searches searches_;

  std::size_t place_ = 0;  // an ordinal, or one in the filter's list
  bool resolved_ = false;  // the record at place_ was looked at
  bool eof_ = true;
  bool bof_ = true;
  bool fromFront_ = true;
  bool currentGone_ = false;     // the current record was deleted here
  const Row* row_ = nullptr;     // the current record, once fetched
  ReadColumns reads_;            // of the current record
  std::optional<Sought> found_;  // by which Find met the current record

  std::optional<std::vector<std::uint32_t>> filter_;  // ordinals
  std::optional<Sought> filteredBy_;
};

}  // namespace ADODB::engine
