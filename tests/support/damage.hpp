// Damaged copies of a text, for parsers that must take anything without falling over.
#pragma once

#include <cstddef>
#include <random>
#include <string>
#include <string_view>

namespace orvane_test {

// The text with a few bytes changed, removed, repeated or put in; the same for the same seed.
inline std::string Damaged(std::string_view text, unsigned seed) {
  std::mt19937 random(seed);
  const auto below = [&random](std::size_t bound) { return bound == 0 ? 0 : random() % bound; };
  constexpr char kMeaningful[] = "<>&;:=\"'/\\ \n\r\t#%,{}[]()*\0\xFF";
  std::string damaged(text);
  for (std::size_t count = 1 + below(6); count > 0; --count) {
    const std::size_t at = below(damaged.size() + 1);
    const std::size_t length = below(12);
    switch (random() % 4) {
      case 0:
        if (at < damaged.size()) damaged[at] = static_cast<char>(random() & 0xFF);
        break;
      case 1:
        damaged.erase(at, length);
        break;
      case 2:
        damaged.insert(at, damaged.substr(at, length));
        break;
      default:
        damaged.insert(at, 1, kMeaningful[below(sizeof kMeaningful - 1)]);
    }
  }
  return damaged;
}

}  // namespace orvane_test
