// The statements that read the rows of one table by key.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "platform/adodb/cursor/key_list.hpp"
#include "platform/adodb/session/provider.hpp"
#include "platform/adodb/sql/select_shape.hpp"

namespace ADODB::engine {

// Each yields the columns of the statement and the key behind them, or the key alone.
class KeyedSelect {
 public:
  struct Query {
    std::string sql;
    Parameters parameters;
  };

  KeyedSelect(const Dialect& dialect, SelectShape select, const std::vector<std::string>& keyColumns);

  std::size_t KeyCount() const { return keyNames_.size(); }
  const SelectShape& Select() const { return select_; }
  bool HasOrder() const { return !select_.order.empty(); }
  // Whether the rows are chosen by a subquery: they do not come in the order of the key by themselves. A
  // string that looks like one counts, which does no harm.
  bool HasSubquery() const;

  // The first `limit` rows behind a key, in its order; from the front for an empty one.
  Query Page(const Row& behind, std::size_t limit) const;
  // The keys of all rows behind a key.
  Query KeysBehind(const Row& behind) const;
  // All keys in the statement's own order.
  Query KeysInOrder() const;
  // The first `limit` rows as they come.
  Query Unordered(std::size_t limit) const;

  // The rows with these keys, in their order. `ascending` when the ordinals' keys are: rows that lie close
  // together are then read as a range, and others may stand between them. Whatever the statement's condition
  // says of a row now, unless it `mustMeet` it.
  Query ByKeys(const KeyList& keys, std::span<const std::size_t> ordinals, bool ascending,
               bool mustMeet) const;

 private:
  std::string Behind() const;
  const std::string& RowsBehind(const Row& key, Parameters& parameters) const;
  std::string Among(const KeyList& keys, std::span<const std::size_t> ordinals, bool ascending,
                    Parameters& parameters) const;

  const Dialect& dialect_;
  SelectShape select_;
  std::vector<std::string> keyNames_;  // qualified and quoted
  std::string key_;                    // all of them: "k1,k2"
  // What is the same for every page.
  std::string list_;    // of the columns, with the key behind them
  std::string front_;   // all rows in the key's order, from the table on
  std::string behind_;  // those behind a key
};

}  // namespace ADODB::engine
