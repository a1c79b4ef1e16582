#include "platform/adodb/cursor/keyed_select.hpp"

#include <string_view>
#include <utility>

#include "platform/adodb/sql/tokens.hpp"

namespace ADODB::engine {

KeyedSelect::KeyedSelect(const Dialect& dialect, SelectShape select,
                         const std::vector<std::string>& keyColumns)
    : dialect_(dialect), select_(std::move(select)) {
  for (const std::string& column : keyColumns) {
    keyNames_.push_back(select_.name + "." + dialect_.QuotedName(column));
    key_ += (key_.empty() ? "" : ",") + keyNames_.back();
  }
  list_ = select_.list + "," + key_;
  front_ = select_.From({}) + " ORDER BY " + key_;
  behind_ = select_.From(Behind()) + " ORDER BY " + key_;
}

bool KeyedSelect::HasSubquery() const {
  constexpr std::string_view kSelect = "select";
  const std::string_view condition = select_.condition;
  for (std::size_t at = 0; at + kSelect.size() <= condition.size(); ++at) {
    if (EqualsIgnoringAsciiCase(condition.substr(at, kSelect.size()), kSelect)) return true;
  }
  return false;
}

// "k1 > ?", or "k1 >= ? AND (k1 > ? OR (k1 = ? AND (k2 > ?)))": the first term says nothing new, but it is
// the one by which planners enter the key's index in the middle.
std::string KeyedSelect::Behind() const {
  std::string condition;
  std::string closing;
  if (keyNames_.size() > 1) condition = keyNames_[0] + " >= ? AND ";
  for (std::size_t i = 0; i < keyNames_.size(); ++i) {
    condition += "(" + keyNames_[i] + " > ?";
    closing += ")";
    if (i + 1 < keyNames_.size()) {
      condition += " OR (" + keyNames_[i] + " = ? AND ";
      closing += ")";
    }
  }
  return condition + closing;
}

// From the front where there is no key. The parameters are those of Behind's condition.
const std::string& KeyedSelect::RowsBehind(const Row& key, Parameters& parameters) const {
  if (key.empty()) return front_;
  if (key.size() > 1) parameters.push_back(key[0]);
  for (std::size_t i = 0; i < key.size(); ++i) {
    parameters.push_back(key[i]);
    if (i + 1 < key.size()) parameters.push_back(key[i]);
  }
  return behind_;
}

KeyedSelect::Query KeyedSelect::Page(const Row& behind, std::size_t limit) const {
  Query query;
  query.sql = dialect_.Limited(list_, RowsBehind(behind, query.parameters), limit);
  return query;
}

KeyedSelect::Query KeyedSelect::KeysBehind(const Row& behind) const {
  Query query;
  query.sql = "SELECT " + key_ + RowsBehind(behind, query.parameters);
  return query;
}

KeyedSelect::Query KeyedSelect::KeysInOrder() const {
  return {"SELECT " + key_ + select_.From({}) + " " + select_.order, {}};
}

KeyedSelect::Query KeyedSelect::Unordered(std::size_t limit) const {
  return {dialect_.Limited(list_, select_.From({}), limit), {}};
}

KeyedSelect::Query KeyedSelect::ByKeys(const KeyList& keys, std::span<const std::size_t> ordinals,
                                       bool ascending, bool mustMeet) const {
  Query query;
  SelectShape byKey = select_;
  if (!mustMeet) byKey.condition.clear();
  const std::string condition = Among(keys, ordinals, ascending, query.parameters);
  query.sql = "SELECT " + list_ + byKey.From(condition) + " ORDER BY " + key_;
  return query;
}

std::string KeyedSelect::Among(const KeyList& keys, std::span<const std::size_t> ordinals, bool ascending,
                               Parameters& parameters) const {
  if (keyNames_.size() > 1) {
    std::string condition;
    for (const std::size_t ordinal : ordinals) {
      condition += condition.empty() ? "((" : " OR (";
      const Row key = keys.Get(ordinal);
      for (std::size_t i = 0; i < key.size(); ++i) {
        condition += (i == 0 ? "" : " AND ") + keyNames_[i] + " = ?";
        parameters.push_back(key[i]);
      }
      condition += ")";
    }
    return condition + ")";
  }
  const std::size_t first = ordinals.front();
  const std::size_t last = ordinals.back();
  // Between keys that lie close together little else can stand, and a range is read fastest.
  const bool together = ascending && last - first + 1 == ordinals.size();
  const bool close = together && (select_.condition.empty() ||
                                  (keys.IsNumeric() && keys.Number(last) - keys.Number(first) <=
                                                           static_cast<std::int64_t>(4 * ordinals.size())));
  if (ordinals.size() > 1 && close) {
    parameters.push_back(keys.Get(first).front());
    parameters.push_back(keys.Get(last).front());
    return keyNames_.front() + " >= ? AND " + keyNames_.front() + " <= ?";
  }
  std::string condition = keyNames_.front() + " IN (";
  for (const std::size_t ordinal : ordinals) {
    condition += parameters.empty() ? "?" : ",?";
    parameters.push_back(keys.Get(ordinal).front());
  }
  return condition + ")";
}

}  // namespace ADODB::engine
