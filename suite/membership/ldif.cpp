#include "suite/membership/ldif.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

#include "suite/membership/directory.hpp"

namespace VnMembership {
namespace {

struct Line {
  std::size_t number;  // of its first line in the text
  std::string text;    // without comments, continued lines joined; empty between records
};

std::vector<Line> LogicalLines(std::string_view text) {
  std::vector<Line> lines;
  bool inComment = false;
  for (std::size_t start = 0, number = 1; start < text.size(); ++number) {
    const std::size_t end = std::min(text.find('\n', start), text.size());
    std::string_view line = text.substr(start, end - start);
    start = end + 1;
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);

    if (!line.empty() && line[0] == ' ') {
      if (!inComment && !lines.empty()) lines.back().text += line.substr(1);
      continue;
    }
    inComment = !line.empty() && line[0] == '#';
    if (!inComment) lines.push_back({number, std::string(line)});
  }
  lines.push_back({0, ""});
  return lines;
}

std::optional<std::string> FromBase64(std::string_view text) {
  static constexpr std::string_view kAlphabet =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  if (text.size() % 4 != 0) return std::nullopt;
  std::size_t padding = 0;
  while (padding < 2 && padding < text.size() && text[text.size() - 1 - padding] == '=') ++padding;

  std::string bytes;
  std::uint32_t bits = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool pad = i >= text.size() - padding;
    const std::size_t digit = pad ? 0 : kAlphabet.find(text[i]);
    if (digit == std::string_view::npos) return std::nullopt;
    bits = bits << 6 | static_cast<std::uint32_t>(digit);
    if (i % 4 == 3) {
      for (const int shift : {16, 8, 0}) bytes += static_cast<char>(bits >> shift & 0xFF);
      bits = 0;
    }
  }
  bytes.resize(bytes.size() - padding);
  return bytes;
}

class Reader {
 public:
  explicit Reader(const std::string& name) : name_(name) {}

  std::vector<Entry> Read(std::string_view text) {
    for (const Line& line : LogicalLines(text)) {
      if (line.text.empty()) {
        EndEntry();
      } else {
        Take(line);
      }
    }
    return std::move(entries_);
  }

 private:
  [[noreturn]] void Refuse(const Line& line, const std::string& expected) const {
    Raise(kDirectoryUnavailable, name_ + ":" + std::to_string(line.number) + ": expected " + expected);
  }

  void Take(const Line& line) {
    const std::size_t colon = line.text.find(':');
    if (colon == std::string::npos || colon == 0) Refuse(line, "\"attribute: value\"");
    const std::string attribute = line.text.substr(0, colon);
    const std::string value = ValueOf(line, colon + 1);

    if (!entry_) {
      if (attribute == "version" && entries_.empty()) return;
      if (attribute != "dn") Refuse(line, "an entry's \"dn:\"");
      entry_.emplace();
      entry_->dn = value;
    } else if (attribute == "changetype") {
      Refuse(line, "entries, not changes");
    } else if (attribute == "dn") {
      Refuse(line, "an empty line between two entries");
    } else {
      entry_->attributes[attribute].push_back(value);
    }
  }

  std::string ValueOf(const Line& line, std::size_t start) const {
    const bool encoded = start < line.text.size() && line.text[start] == ':';
    if (start < line.text.size() && line.text[start] == '<') Refuse(line, "a value of its own, not a URL");
    if (encoded) ++start;
    while (start < line.text.size() && line.text[start] == ' ') ++start;
    std::string value = line.text.substr(start);
    if (!encoded) return value;
    const std::optional<std::string> bytes = FromBase64(value);
    if (!bytes) Refuse(line, "a value in base64");
    return *bytes;
  }

  void EndEntry() {
    if (entry_) entries_.push_back(std::move(*entry_));
    entry_.reset();
  }

  const std::string& name_;
  std::vector<Entry> entries_;
  std::optional<Entry> entry_;
};

}  // namespace

std::vector<Entry> ParseLdif(std::string_view text, const std::string& name) {
  return Reader(name).Read(text);
}

}  // namespace VnMembership
