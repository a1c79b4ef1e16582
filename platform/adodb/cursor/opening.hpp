// From a prepared statement to the rows of a record set.
#pragma once

#include <cstddef>
#include <memory>

#include "platform/adodb/cursor/row_source.hpp"
#include "platform/adodb/cursor/row_writer.hpp"
#include "platform/adodb/session/shared_session.hpp"
#include "platform/adodb/types.hpp"

namespace ADODB::engine {

struct OpenedRows {
  std::unique_ptr<RowSource> source;  // null where the statement yields no columns
  std::unique_ptr<RowWriter> writer;  // null where the rows cannot be changed
};

// Rows that are walked by key, or changed, where the statement is a plain select of one table whose rows can
// be addressed; a copy of them otherwise. At most `mostRows`, 0 for all.
OpenedRows OpenRows(const std::shared_ptr<SharedSession>& session, const SharedSession::Prepared& prepared,
                    CursorType type, LockType lock, std::size_t mostRows);

}  // namespace ADODB::engine
