#include "platform/cdo/curl/encoding.hpp"

#include "platform/base/base64.hpp"
#include "platform/base/text.hpp"

namespace CDO::curl {
namespace {

constexpr std::size_t kLine = 76;
constexpr std::size_t kLongestQuoted = 200;

// The longest beginning of `text` of at most `limit` bytes that does not cut a UTF-8 character in two.
std::size_t WholeCharacters(std::string_view text, std::size_t limit) {
  if (text.size() <= limit) return text.size();
  std::size_t end = limit;
  while (end > 0 && base::IsUtf8Continuation(text[end])) --end;
  return end > 0 ? end : limit;
}

std::string Quoted(std::string_view text) {
  std::string out = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') out += '\\';
    out += c;
  }
  return out + "\"";
}

std::string EncodedWords(std::string_view utf8) {
  constexpr std::size_t kBytesPerWord = 42;  // 56 characters of base64; 12 more for the word's frame
  std::string out;
  while (!utf8.empty()) {
    const std::size_t count = WholeCharacters(utf8, kBytesPerWord);
    if (!out.empty()) out += "\r\n ";
    out += "=?utf-8?B?";
    base::AppendBase64(out, utf8.substr(0, count));
    out += "?=";
    utf8.remove_prefix(count);
  }
  return out;
}

}  // namespace

bool IsPlainAscii(std::string_view text) {
  for (const char c : text) {
    if (c < ' ' || c > '~') return false;
  }
  return true;
}

std::string Base64Lines(std::string_view bytes) {
  constexpr std::size_t kBytesPerLine = kLine / 4 * 3;
  std::string out;
  out.reserve(bytes.size() / kBytesPerLine * (kLine + 2) + kLine + 2);
  for (std::size_t i = 0; i < bytes.size(); i += kBytesPerLine) {
    base::AppendBase64(out, bytes.substr(i, kBytesPerLine));
    out += "\r\n";
  }
  return out;
}

std::string QuotedPrintable(std::string_view text) {
  std::string out;
  std::size_t column = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text.substr(i, 2) == "\r\n") {
      out += "\r\n";
      column = 0;
      ++i;
      continue;
    }
    const char c = text[i];
    const bool atLineEnd = i + 1 == text.size() || text.substr(i + 1, 2) == "\r\n";
    const bool space = c == ' ' || c == '\t';
    const bool plain = space ? !atLineEnd : (c > ' ' && c <= '~' && c != '=');
    const std::size_t width = plain ? 1 : 3;
    if (column + width > kLine - 1) {
      out += "=\r\n";
      column = 0;
    }
    if (plain) {
      out += c;
    } else {
      base::AppendHex(out += '=', c);
    }
    column += width;
  }
  return out;
}

std::string HeaderText(std::string_view utf8) {
  constexpr std::size_t kLongestPlain = 900;
  const bool plain = IsPlainAscii(utf8) && utf8.size() <= kLongestPlain;
  return plain && utf8.find("=?") == std::string_view::npos ? std::string(utf8) : EncodedWords(utf8);
}

std::string HeaderPhrase(std::string_view utf8) {
  return IsPlainAscii(utf8) && utf8.size() <= kLongestQuoted ? Quoted(utf8) : EncodedWords(utf8);
}

std::string HeaderParameter(std::string_view name, std::string_view utf8) {
  std::string out = ";\r\n " + std::string(name);
  if (IsPlainAscii(utf8) && utf8.size() <= kLongestQuoted) return out + "=" + Quoted(utf8);
  out += "*=utf-8''";
  for (const char c : utf8) {
    const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                       c == '-' || c == '.' || c == '_';
    if (plain) {
      out += c;
    } else {
      base::AppendHex(out += '%', c);
    }
  }
  return out;
}

std::string WithCrLf(std::string_view text) {
  std::string out;
  out.reserve(text.size() + text.size() / 32);
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\r' || text[i] == '\n') {
      if (text.substr(i, 2) == "\r\n") ++i;
      out += "\r\n";
    } else {
      out += text[i];
    }
  }
  return out;
}

}  // namespace CDO::curl
