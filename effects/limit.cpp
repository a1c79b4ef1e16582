#include "effects/limit.hpp"

#include <charconv>
#include <cmath>
#include <map>
#include <system_error>
#include <utility>

#include "platform/base/text.hpp"

namespace effects {
namespace {

template <class Number>
std::optional<Number> WholeText(std::string_view text) {
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  return number;
}

using Of = Deletions::Of;

std::optional<Of> KindOf(std::string_view op, bool apart) {
  if (op == "row.delete" || op == "rows.delete") return Of::Rows;
  if (op == "shared.delete") return Of::Shared;
  if (op == "file.delete") return apart ? Of::Files : Of::Items;
  if (op == "folder.delete") return apart ? Of::Folders : Of::Items;
  return std::nullopt;
}

bool IsEmptiedByRule(const Deletions& deletions) {
  if (deletions.of == Of::Rows) return base::EqualsIgnoringAsciiCase(deletions.subject, "PREVIEW");
  const std::size_t slash = deletions.subject.find_last_of("/\\");
  const std::string_view name =
      std::string_view(deletions.subject).substr(slash == std::string::npos ? 0 : slash + 1);
  return base::EqualsIgnoringAsciiCase(name, "HTML");
}

}  // namespace

std::optional<Limit> Limit::Parse(std::string_view text) {
  constexpr double kAll = 100;
  if (text.empty()) return std::nullopt;
  Limit limit;
  if (text.back() != '%') {
    limit.count = WholeText<std::uint64_t>(text);
    return limit.count ? std::optional(limit) : std::nullopt;
  }
  limit.percent = WholeText<double>(text.substr(0, text.size() - 1));
  if (!limit.percent || !(*limit.percent >= 0) || *limit.percent > kAll) return std::nullopt;
  return limit;
}

std::string Limit::Text() const {
  if (count) return std::to_string(*count);
  char text[32];
  const auto [end, error] = std::to_chars(text, text + sizeof text, *percent);
  return std::string(text, end) + "%";
}

std::vector<Deletions> DeletionsOf(const Limit& limit, const Counts& counts) {
  std::map<std::pair<Of, std::string>, std::uint64_t> sums;
  for (const auto& [key, count] : counts.All()) {
    const auto& [op, subject] = key;
    const std::optional<Of> of = KindOf(op, limit.percent.has_value());
    if (of && count.done + count.unknown > 0) sums[{*of, subject}] += count.done + count.unknown;
  }
  std::vector<Deletions> all;
  for (const auto& [key, count] : sums) {
    Deletions deletions{key.second, key.first, count};
    if (!IsEmptiedByRule(deletions)) all.push_back(std::move(deletions));
  }
  return all;
}

std::uint64_t Allowed(const Limit& limit, std::uint64_t of) {
  if (limit.count) return *limit.count;
  return static_cast<std::uint64_t>(std::floor(static_cast<double>(of) * *limit.percent / 100));
}

std::vector<Excess> ExcessesOf(const Limit& limit, const Counts& counts, const Holding& holding) {
  std::vector<Excess> excesses;
  for (Deletions& deletions : DeletionsOf(limit, counts)) {
    const std::optional<std::uint64_t> of = limit.percent ? holding(deletions) : 0;
    if (!of) continue;
    const std::uint64_t allowed = Allowed(limit, *of);
    if (deletions.count > allowed) excesses.push_back({std::move(deletions), *of, allowed});
  }
  return excesses;
}

}  // namespace effects
