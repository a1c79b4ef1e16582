#include "platform/adodb/cursor/value_index.hpp"

#include <algorithm>
#include <cmath>
#include <type_traits>
#include <utility>

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
  std::string key = KeyOf(value);
  if (!key.empty()) entries_.emplace_back(std::move(key), static_cast<std::uint32_t>(ordinal));
}

void ValueIndex::Finish() {
  std::sort(entries_.begin(), entries_.end());
}

std::vector<std::uint32_t> ValueIndex::Find(const automation::Variant& value) const {
  std::vector<std::uint32_t> ordinals;
  const Entry first(KeyOf(value), 0);
  for (auto entry = std::lower_bound(entries_.begin(), entries_.end(), first);
       entry != entries_.end() && entry->first == first.first; ++entry) {
    ordinals.push_back(entry->second);
  }
  return ordinals;
}

std::optional<std::uint32_t> ValueIndex::FirstFrom(const automation::Variant& value, std::size_t from) const {
  const Entry first(KeyOf(value), static_cast<std::uint32_t>(from));
  const auto entry = std::lower_bound(entries_.begin(), entries_.end(), first);
  if (entry == entries_.end() || entry->first != first.first) return std::nullopt;
  return entry->second;
}

}  // namespace ADODB::engine
