#include "platform/adodb/session/statement_cache.hpp"

#include <utility>

namespace ADODB::engine {
namespace {

std::size_t Hash(KnownStatement::Kind kind, std::size_t text) {
  return text + static_cast<std::size_t>(kind);
}

bool ReadsNamedColumns(std::string_view sql) {
  constexpr std::string_view kSelect = "select";
  return EqualsIgnoringAsciiCase(sql.substr(0, kSelect.size()), kSelect) &&
         sql.find('*') == std::string_view::npos;
}

}  // namespace

Sql KnownStatement::ForSession(bool onServer, bool hasParameters) {
  const std::string& sql = translation.text;
  if (onServer && !hasParameters && !(cameBefore && ReadsNamedColumns(sql))) return sql;
  return {sql, prepared};
}

template <class IsText, class HashOf>
StatementCache::Known StatementCache::Find(KnownStatement::Kind kind, IsText isText, HashOf hashOf) {
  // A procedure that is called again and again sends the same statement each time.
  if (order_.empty()) return nullptr;
  Order::iterator found = order_.begin();
  if ((*found)->kind != kind || !isText((*found)->text)) {
    const auto entry = byHash_.find(Hash(kind, hashOf()));
    if (entry == byHash_.end()) return nullptr;
    found = entry->second;
    if ((*found)->kind != kind || !isText((*found)->text)) return nullptr;
    order_.splice(order_.begin(), order_, found);
  }
  (*found)->cameBefore = true;
  return *found;
}

StatementCache::Known StatementCache::Find(KnownStatement::Kind kind, const Statement& statement) {
  if (kind == KnownStatement::Kind::Bound) {
    return Find(
        kind, [&](const FixedText& text) { return text.IsOf(statement); },
        [&] { return FixedText::Hash(statement); });
  }
  const std::string_view sql = statement.ToString();
  return Find(
      kind, [&](const FixedText& text) { return text.Text() == sql; }, [&] { return FixedText::Hash(sql); });
}

StatementCache::Known StatementCache::FindComposed(std::string_view sql) {
  return Find(
      KnownStatement::Kind::Composed, [&](const FixedText& text) { return text.Text() == sql; },
      [&] { return FixedText::Hash(sql); });
}

StatementCache::Known StatementCache::Keep(KnownStatement::Kind kind, FixedText text,
                                           Translation translation) {
  auto known = std::make_shared<KnownStatement>();
  known->kind = kind;
  known->text = std::move(text);
  known->translation = std::move(translation);
  if (known->text.Text().size() > kLongest || known->translation.usesLocale) return known;
  const std::size_t hash = Hash(kind, known->text.Hash());
  order_.push_front(known);
  if (const auto [entry, isNew] = byHash_.try_emplace(hash, order_.begin()); !isNew) {
    order_.erase(std::exchange(entry->second, order_.begin()));
  }
  if (order_.size() > kMost) {
    const KnownStatement& last = *order_.back();
    byHash_.erase(Hash(last.kind, last.text.Hash()));
    order_.pop_back();
  }
  return known;
}

}  // namespace ADODB::engine
