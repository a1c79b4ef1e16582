#include "platform/adodb/session/connection_string.hpp"

#include "platform/adodb/sql/tokens.hpp"
#include "platform/automation/error.hpp"

namespace ADODB::engine {
namespace {

std::string_view Trimmed(std::string_view text) {
  return base::Trimmed(text, " \t\n\v\f\r");
}

[[noreturn]] void Refuse(std::string_view what, std::size_t offset) {
  throw automation::Error(automation::ErrorNumber::ArgumentsInvalid, "ADODB.Connection",
                          "The connection string is not valid: " + std::string(what) + " at character " +
                              std::to_string(offset + 1) + ".");
}

// A value in braces or quotes, from its opening character; the closing one is doubled inside.
std::string Enclosed(std::string_view text, std::size_t& at, char closing) {
  const std::size_t start = at++;
  std::string value;
  for (;; ++at) {
    if (at >= text.size()) Refuse("a value that does not end begins", start);
    if (text[at] == closing) {
      if (at + 1 >= text.size() || text[at + 1] != closing) break;
      ++at;
    }
    value += text[at];
  }
  ++at;
  while (at < text.size() && text[at] != ';') {
    if (!Trimmed(text.substr(at, 1)).empty()) Refuse("a ';' is missing", at);
    ++at;
  }
  return value;
}

bool NeedsBraces(std::string_view value) {
  return value != Trimmed(value) || value.find_first_of(";{}") != std::string_view::npos ||
         (!value.empty() && (value.front() == '\'' || value.front() == '"'));
}

}  // namespace

ConnectionString ConnectionString::Parse(std::string_view text) {
  ConnectionString result;
  std::size_t at = 0;
  while (at < text.size()) {
    const std::size_t stop = text.find_first_of(";=", at);
    const std::string_view keyword =
        Trimmed(text.substr(at, stop == std::string_view::npos ? stop : stop - at));
    if (stop == std::string_view::npos || text[stop] == ';') {
      if (!keyword.empty()) Refuse("a '=' is missing after the keyword", at);
      at = stop == std::string_view::npos ? text.size() : stop + 1;
      continue;
    }
    if (keyword.empty()) Refuse("a keyword is missing before '='", stop);
    at = stop + 1;
    while (at < text.size() && text[at] != ';' && Trimmed(text.substr(at, 1)).empty()) ++at;
    std::string value;
    if (at < text.size() && text[at] == '{') {
      value = Enclosed(text, at, '}');
    } else if (at < text.size() && (text[at] == '"' || text[at] == '\'')) {
      value = Enclosed(text, at, text[at]);
    } else {
      const std::size_t end = text.find(';', at);
      value = Trimmed(text.substr(at, end == std::string_view::npos ? end : end - at));
      at = end == std::string_view::npos ? text.size() : end;
    }
    if (at < text.size()) ++at;
    result.Set(keyword, std::move(value));
  }
  return result;
}

std::optional<std::string> ConnectionString::Value(std::string_view keyword) const {
  for (const auto& [name, value] : parts_) {
    if (EqualsIgnoringAsciiCase(name, keyword)) return value;
  }
  return std::nullopt;
}

void ConnectionString::Set(std::string_view keyword, std::string value) {
  for (auto& [name, old] : parts_) {
    if (EqualsIgnoringAsciiCase(name, keyword)) {
      old = std::move(value);
      return;
    }
  }
  parts_.emplace_back(keyword, std::move(value));
}

void ConnectionString::Remove(std::string_view keyword) {
  std::erase_if(parts_, [&](const auto& part) { return EqualsIgnoringAsciiCase(part.first, keyword); });
}

std::string ConnectionString::ToString() const {
  std::string text;
  for (const auto& [name, value] : parts_) {
    if (!text.empty()) text += ';';
    text += name + "=";
    if (!NeedsBraces(value)) {
      text += value;
      continue;
    }
    text += '{';
    for (const char c : value) text.append(c == '}' ? 2u : 1u, c);
    text += '}';
  }
  return text;
}

}  // namespace ADODB::engine
