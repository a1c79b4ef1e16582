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
  }
}

bool KeyedSelect::HasSubquery() const {
  constexpr std::string_view kSelect = "select";
  const std::string_view condition = select_.condition;
  for (std::size_t at = 0; at + kSelect.size() <= condition.size(); ++at) {
    if (EqualsIgnoringAsciiCase(condition.substr(at, kSelect.size()), kSelect)) return true;
  }
  return false;
}

std::string KeyedSelect::Columned(const char* suffix) const {
  std::string list;
  for (const std::string& name : keyNames_) list += (list.empty() ? "" : ",") + name + suffix;
  return list;
}

// "k1 > ?", or "k1 >= ? AND (k1 > ? OR (k1 = ? AND (k2 > ?)))": the first term says nothing new, but it is
// the one by which planners enter the key's index in the middle. No condition at the start.
std::string KeyedSelect::Behind(const Row& key, Parameters& parameters) const {
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

KeyedSelect::Query KeyedSelect::Page(const Row& behind, std::size_t limit) const {
  Query query;
  const std::string condition = Behind(behind, query.parameters);
  query.sql = dialect_.Limited(select_.list + "," + Columned(""),
                               select_.From(condition) + " ORDER BY " + Columned(""), limit);
  return query;
}

KeyedSelect::Query KeyedSelect::KeysBehind(const Row& behind) const {
  Query query;
  const std::string condition = Behind(behind, query.parameters);
  query.sql = "SELECT " + Columned("") + select_.From(condition) + " ORDER BY " + Columned("");
  return query;
}

KeyedSelect::Query KeyedSelect::KeysInOrder() const {
  return {"SELECT " + Columned("") + select_.From({}) + " " + select_.order, {}};
}

KeyedSelect::Query KeyedSelect::Unordered(std::size_t limit) const {
  return {dialect_.Limited(select_.list + "," + Columned(""), select_.From({}), limit), {}};
}

KeyedSelect::Query KeyedSelect::ByKeys(const KeyList& keys, std::span<const std::size_t> ordinals,
                                       bool ascending, bool mustMeet) const {
  Query query;
  SelectShape byKey = select_;
  if (!mustMeet) byKey.condition.clear();
  const std::string condition = Among(keys, ordinals, ascending, query.parameters);
  query.sql =
      "SELECT " + byKey.list + "," + Columned("") + byKey.From(condition) + " ORDER BY " + Columned("");
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
