#include "host/near_name.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace orvane::host {
namespace {

std::string Lower(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return lower;
}

std::size_t SlipsAllowed(std::size_t length) {
  if (length <= 4) return 0;
  return length < 10 ? 1 : 2;
}

// The number of letters to insert, delete, replace or swap with their neighbours (optimal string alignment).
std::size_t Slips(const std::string& left, const std::string& right) {
  using Row = std::vector<std::size_t>;
  std::array<Row, 3> rows;  // the last three of the table
  rows.fill(Row(right.size() + 1));
  for (std::size_t j = 0; j <= right.size(); ++j) rows[0][j] = j;
  for (std::size_t i = 1; i <= left.size(); ++i) {
    Row& now = rows[i % 3];
    const Row& above = rows[(i - 1) % 3];
    now[0] = i;
    for (std::size_t j = 1; j <= right.size(); ++j) {
      const std::size_t replaced = above[j - 1] + (left[i - 1] == right[j - 1] ? 0 : 1);
      now[j] = std::min({above[j] + 1, now[j - 1] + 1, replaced});
      if (i > 1 && j > 1 && left[i - 1] == right[j - 2] && left[i - 2] == right[j - 1]) {
        now[j] = std::min(now[j], rows[(i - 2) % 3][j - 2] + 1);
      }
    }
  }
  return rows[left.size() % 3][right.size()];
}

}  // namespace

std::optional<std::string_view> NearName(std::string_view name, std::span<const std::string_view> known) {
  if (std::find(known.begin(), known.end(), name) != known.end()) return std::nullopt;
  const std::string lower = Lower(name);
  std::optional<std::string_view> nearest;
  std::size_t fewest = 0;
  for (const std::string_view candidate : known) {
    const std::size_t slips = Slips(lower, Lower(candidate));
    if (slips > SlipsAllowed(candidate.size()) || (nearest && slips >= fewest)) continue;
    nearest = candidate;
    fewest = slips;
  }
  return nearest;
}

}  // namespace orvane::host
