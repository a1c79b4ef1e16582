// Which name was probably meant by one that nobody knows.
#pragma once

#include <optional>
#include <span>
#include <string_view>

namespace orvane::host {

// The known name that differs from `name` in the case of its letters, or by a slip of typing: one letter too
// many, missing, wrong or swapped with its neighbour, two from ten letters on. Short names (up to four
// letters) are near only by their case. Nothing for a name that is known, or near none.
std::optional<std::string_view> NearName(std::string_view name, std::span<const std::string_view> known);

}  // namespace orvane::host
