// A digest by which contents are compared without keeping them.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string_view>

namespace base {

// The length and 128 bits of a content, which may come in any pieces. Two contents that differ by accident or
// by work done in between share no digest; it is no proof against somebody who makes them up.
class ContentDigest {
 public:
  using Value = std::array<std::uint64_t, 3>;

  void Add(std::string_view piece) {
    size_ += piece.size();
    if (pending_ > 0) {
      const std::size_t taken = std::min(piece.size(), sizeof word_ - pending_);
      std::memcpy(word_ + pending_, piece.data(), taken);
      pending_ += taken;
      piece.remove_prefix(taken);
      if (pending_ < sizeof word_) return;
      AddWord(word_);
    }
    for (; piece.size() >= sizeof word_; piece.remove_prefix(sizeof word_)) AddWord(piece.data());
    pending_ = piece.size();
    if (pending_ > 0) std::memcpy(word_, piece.data(), pending_);
  }

  Value Get() const {
    ContentDigest whole = *this;
    std::memset(whole.word_ + pending_, 0, sizeof word_ - pending_);
    whole.AddWord(whole.word_);
    return {size_, whole.one_, whole.other_};
  }

 private:
  void AddWord(const char* bytes) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    one_ = std::rotl((one_ ^ word) * 0x9E3779B97F4A7C15U, 29);
    other_ = std::rotl(other_ + word * 0xC2B2AE3D27D4EB4FU, 31) * 0x165667B19E3779F9U;
  }

  std::uint64_t size_ = 0;
  std::uint64_t one_ = 1;
  std::uint64_t other_ = 2;
  char word_[sizeof(std::uint64_t)] = {};
  std::size_t pending_ = 0;  // bytes of the word that are there
};

ContentDigest::Value DigestOf(std::string_view content);
// Of what a descriptor gives up to the end of its file; nothing when it cannot be read.
std::optional<ContentDigest::Value> DigestOfFile(int descriptor);

}  // namespace base
