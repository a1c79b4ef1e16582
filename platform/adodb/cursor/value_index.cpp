#include "platform/adodb/cursor/value_index.hpp"

#include <algorithm>
#include <cmath>
#include <functional>
#include <tuple>
#include <type_traits>

namespace ADODB::engine {
namespace {

std::string OfNumber(double number) {
  if (number == std::trunc(number) && std::abs(number) < 9.0e15) {
    return "n" + std::to_string(static_cast<std::int64_t>(number));
  }
  return "r" + std::to_string(number);
}

}  // namespace

std::string ComparisonBytes(const automation::Variant& value, const Dialect& dialect, const Column& column) {
  return std::visit(
      [&](const auto& held) -> std::string {
        using Held = std::decay_t<decltype(held)>;
        if constexpr (std::is_same_v<Held, bool>) {
          return held ? "n1" : "n0";
        } else if constexpr (std::is_same_v<Held, double>) {
          return OfNumber(held);
        } else if constexpr (std::is_integral_v<Held>) {
          return "n" + std::to_string(held);
        } else if constexpr (std::is_same_v<Held, automation::DateTime>) {
          return "d" + std::to_string(held.UnixMicroseconds());
        } else if constexpr (std::is_same_v<Held, std::string>) {
          return "t" + dialect.ComparisonKey(held, column);
        } else {
          return {};
        }
      },
      value.Get());
}

void ValueIndex::Add(std::size_t ordinal, const automation::Variant& value) {
  const std::string key = KeyOf(value);
  if (key.empty()) return;
  entries_.push_back({std::hash<std::string_view>()(key), bytes_.size(),
                      static_cast<std::uint32_t>(key.size()), static_cast<std::uint32_t>(ordinal)});
  bytes_ += key;
}

void ValueIndex::Finish() {
  std::sort(entries_.begin(), entries_.end(), [](const Entry& left, const Entry& right) {
    return std::tie(left.hash, left.ordinal) < std::tie(right.hash, right.ordinal);
  });
}

std::vector<ValueIndex::Entry>::const_iterator ValueIndex::Lower(std::uint64_t hash,
                                                                 std::uint64_t ordinal) const {
  return std::lower_bound(entries_.begin(), entries_.end(), std::pair(hash, ordinal),
                          [](const Entry& entry, const std::pair<std::uint64_t, std::uint64_t>& wanted) {
                            return entry.hash < wanted.first ||
                                   (entry.hash == wanted.first && entry.ordinal < wanted.second);
                          });
}

bool ValueIndex::Matches(const Entry& entry, std::uint64_t hash, std::string_view key) const {
  return entry.hash == hash && std::string_view(bytes_).substr(entry.offset, entry.length) == key;
}

std::vector<std::uint32_t> ValueIndex::Find(const automation::Variant& value) const {
  std::vector<std::uint32_t> ordinals;
  const std::string key = KeyOf(value);
  const std::uint64_t hash = std::hash<std::string_view>()(key);
  for (auto entry = Lower(hash, 0); entry != entries_.end() && entry->hash == hash; ++entry) {
    if (Matches(*entry, hash, key)) ordinals.push_back(entry->ordinal);
  }
  return ordinals;
}

std::optional<std::uint32_t> ValueIndex::FirstFrom(const automation::Variant& value, std::size_t from) const {
  const std::string key = KeyOf(value);
  const std::uint64_t hash = std::hash<std::string_view>()(key);
  for (auto entry = Lower(hash, from); entry != entries_.end() && entry->hash == hash; ++entry) {
    if (Matches(*entry, hash, key)) return entry->ordinal;
  }
  return std::nullopt;
}

}  // namespace ADODB::engine
