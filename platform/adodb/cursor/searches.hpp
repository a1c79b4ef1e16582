// What Find and Filter know of a record set: where the values of its columns stand.
#pragma once

#include <cstdint>
#include <map>
#include <optional>

#include "platform/adodb/cursor/row_source.hpp"
#include "platform/adodb/cursor/value_index.hpp"
#include "platform/adodb/session/shared_session.hpp"

namespace ADODB::engine {

// An index for each column that was searched, made on first use. A dynamic source is read anew when its first
// index is made; from then on its ordinals stay, until it is read again because a value that was not found
// may have come in.
class Searches {
 public:
  // The session and the source must outlive the searches.
  Searches(SharedSession& session, RowSource& source) : session_(session), source_(source) {}

  // The index of a column. `place` is an ordinal that the caller keeps, and is told where its row went; it is
  // left alone where nothing had to be read anew. What it raises leaves the source fit for use.
  const ValueIndex& IndexOf(std::size_t column, std::size_t& place);

  // Whether a value that the column's index lacks may have come in since the set was read; then it must be
  // read again. A missing value is looked for in the database itself, unless nobody has changed that; after
  // many such questions it is cheaper to read the set again.
  bool MayHaveGained(std::size_t column, const automation::Variant& wanted);
  const ValueIndex& Requery(std::size_t column, std::size_t& place);

  // The values of the column have changed through this set.
  void Drop(std::size_t column) { indexes_.erase(column); }

 private:
  SharedSession& session_;
  RowSource& source_;
  std::map<std::size_t, ValueIndex> indexes_;  // by column
  bool placesKept_ = false;                    // of a dynamic source
  std::optional<std::int64_t> mark_;           // of the database when the set was read
  int questions_ = 0;                          // put to the database since then
};

}  // namespace ADODB::engine
