// SQL text that remembers which of its parts are inserted values.
//
// A statement is put together from fixed text (string literals of the program) and values (texts and numbers
// that come from outside). ToString() is byte for byte their plain concatenation. A value that stands inside
// a literal and holds a quote, in pairs too, makes the statement fail with a syntax error before anything is
// sent; so does one that stands outside a literal and is neither a number nor a whole literal. A quote breaks
// a statement, and never becomes part of one.
//
//   Statement sql = "select PARAM_VALUE from PARAMETERS where " "PARAM_NAME = '";
//   sql += SqlValue(name);
//   sql += "'";
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/automation/export.hpp"

namespace ADODB {

// A value to be inserted as it stands, without escaping: inside a literal, or as one (a number, or a text in
// quotes with each quote inside doubled, such as another component makes).
class ORVANE_EXPORT SqlValue {
 public:
  explicit SqlValue(std::string_view text) : text_(text) {}
  explicit SqlValue(std::int32_t number) : text_(std::to_string(number)) {}
  explicit SqlValue(std::int64_t number) : text_(std::to_string(number)) {}
  const std::string& Text() const { return text_; }

 private:
  std::string text_;
};

// Text that this program has made to stand in SQL, such as a timestamp literal. It counts as fixed text, so
// nothing that comes from outside may be in it.
class ORVANE_EXPORT SqlFragment {
 public:
  explicit SqlFragment(std::string text) : text_(std::move(text)) {}
  const std::string& Text() const { return text_; }

 private:
  std::string text_;
};

class ORVANE_EXPORT Statement {
 public:
  struct Span {
    std::size_t offset;  // bytes from the start of the text
    std::size_t length;
  };

  Statement() = default;
  template <std::size_t N>
  Statement(const char (&literal)[N]) {
    text_.reserve(N + kRoomForMore);
    text_.assign(literal, N - 1);
  }
  Statement(const SqlFragment& fragment) : text_(fragment.Text()) {}

  template <std::size_t N>
  Statement& operator+=(const char (&literal)[N]) {
    text_.append(literal, N - 1);
    return *this;
  }
  Statement& operator+=(const SqlValue& value);
  Statement& operator+=(const SqlFragment& fragment);
  Statement& operator+=(const Statement& other);

  // Cuts the last `count` bytes, all of them fixed text: the connector left behind by a chain of conditions.
  void CutLast(std::size_t count);

  bool IsEmpty() const { return text_.empty(); }
  const std::string& ToString() const { return text_; }
  // In order of position, never overlapping.
  std::span<const Span> Values() const {
    return more_.empty() ? std::span<const Span>(few_.data(), count_) : std::span<const Span>(more_);
  }

 private:
  // What mostly follows a statement's first words: a value or two, and a few words more.
  static constexpr std::size_t kRoomForMore = 64;

  void AddValue(Span value);

  std::string text_;
  std::array<Span, 4> few_{};  // the values, while they are no more than these
  std::size_t count_ = 0;      // of the values in few_
  std::vector<Span> more_;     // all values, once they are more
};

template <class Part>
Statement operator+(Statement left, const Part& right) {
  left += right;
  return left;
}
template <std::size_t N>
Statement operator+(Statement left, const char (&right)[N]) {
  left += right;
  return left;
}

}  // namespace ADODB
