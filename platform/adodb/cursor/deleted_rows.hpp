// Deletions by a condition that tell exactly which rows they have removed.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/adodb/cursor/static_rows.hpp"
#include "platform/adodb/session/shared_session.hpp"
#include "platform/adodb/types.hpp"

namespace ADODB::engine {

struct DeletedRows {
  // With the table's columns, or those of its key alone; a key that is wanted beside the columns is hidden
  // behind them. Many rows wait in a temporary file.
  std::unique_ptr<StaticRows> rows;
  // Ordinals of the rows by the table's key, or by all columns where it has none. Keys are kept in memory.
  std::vector<std::uint32_t> order;
};

// Runs a DELETE of one table and tells the rows that it removed, no more and no fewer, whatever others do
// meanwhile: the engine returns them (RETURNING), or they are locked first and then deleted by their keys. It
// is done in the transaction that is open or in one of its own, so that the rows are known before they are
// gone for good. 3251 for a statement of another form, and for a table without a key on an engine that cannot
// return deleted rows.
DeletedRows RunDelete(SharedSession& session, const SharedSession::Prepared& prepared, Deleted wanted);

}  // namespace ADODB::engine
