// A text that passes the check is read alike by every engine: drawn texts are read the way each engine does
// it, and no engine may see other tokens than the tokenizer, nor a second statement.
#include <gtest/gtest.h>

#include <cctype>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "platform/adodb/engines/sqlite/dialect.hpp"
#include "platform/adodb/sql/checked_statement.hpp"
#include "platform/adodb/sql/tokens.hpp"
#include "platform/automation/error.hpp"

namespace {

struct Reading {
  const char* engine;
  bool nestedComments = false;
  bool runComments = false;  // /*! ... */ is not a comment
  bool hashComments = false;
  bool dashesNeedABlank = false;
  bool carriageReturnEndsLine = false;
  bool dollarTexts = false;
  bool escapeTexts = false;  // E'\''
  bool brackets = false;     // [name]
  bool backticks = false;
};

constexpr Reading kReadings[] = {{.engine = "SQLite", .brackets = true, .backticks = true},
                                 {.engine = "PostgreSQL",
                                  .nestedComments = true,
                                  .carriageReturnEndsLine = true,
                                  .dollarTexts = true,
                                  .escapeTexts = true},
                                 {.engine = "MariaDB",
                                  .runComments = true,
                                  .hashComments = true,
                                  .dashesNeedABlank = true,
                                  .backticks = true},
                                 {.engine = "SQL Server", .nestedComments = true, .brackets = true}};

// What an engine sees of a text: its quoted things whole and everything else character by character, without
// blanks and comments. Empty when something does not end.
std::vector<std::string> Seen(std::string_view sql, const Reading& reading) {
  std::vector<std::string> seen;
  const auto at = [&](std::size_t i) { return i < sql.size() ? sql[i] : '\0'; };
  const auto isName = [&](char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; };
  const auto isBlank = [](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); };
  for (std::size_t i = 0; i < sql.size();) {
    const char c = sql[i];
    if (isBlank(c)) {
      ++i;
    } else if (std::isalpha(static_cast<unsigned char>(c)) != 0 || c == '_') {
      const std::size_t start = i;
      while (isName(at(i)) || at(i) == '$') ++i;
      seen.emplace_back(sql.substr(start, i - start));
    } else if ((c == '-' && at(i + 1) == '-' &&
                (!reading.dashesNeedABlank || i + 2 >= sql.size() || isBlank(at(i + 2)))) ||
               (c == '#' && reading.hashComments)) {
      while (i < sql.size() && sql[i] != '\n' && !(reading.carriageReturnEndsLine && sql[i] == '\r')) ++i;
    } else if (c == '/' && at(i + 1) == '*' &&
               !(reading.runComments && (at(i + 2) == '!' || sql.substr(i + 2, 2) == "M!"))) {
      int depth = 1;
      for (i += 2; i < sql.size() && depth > 0;) {
        if (sql[i] == '*' && at(i + 1) == '/') {
          --depth, i += 2;
        } else if (reading.nestedComments && sql[i] == '/' && at(i + 1) == '*') {
          ++depth, i += 2;
        } else {
          ++i;
        }
      }
      if (depth > 0) return {};
    } else if (c == '$' && reading.dollarTexts) {
      std::size_t end = i + 1;
      while (isName(at(end))) ++end;
      if (at(end) != '$') {
        seen.emplace_back(1, c), ++i;
        continue;
      }
      const std::string_view tag = sql.substr(i, end + 1 - i);
      const std::size_t close = sql.find(tag, end + 1);
      if (close == std::string_view::npos) return {};
      seen.emplace_back(sql.substr(i, close + tag.size() - i));
      i = close + tag.size();
    } else if (c == '\'' || c == '"' || (c == '`' && reading.backticks) || (c == '[' && reading.brackets)) {
      const char closing = c == '[' ? ']' : c;
      const bool escapes = c == '\'' && reading.escapeTexts && i > 0 &&
                           (sql[i - 1] == 'E' || sql[i - 1] == 'e') && (i < 2 || !isName(sql[i - 2]));
      const std::size_t start = i++;
      for (;; ++i) {
        if (i >= sql.size()) return {};
        if (escapes && sql[i] == '\\') {
          ++i;
        } else if (sql[i] == closing) {
          if (at(i + 1) != closing) break;
          ++i;
        }
      }
      ++i;
      seen.emplace_back(sql.substr(start, i - start));
    } else {
      seen.emplace_back(1, c), ++i;
    }
  }
  return seen;
}

// The tokens in the same form. A name in quotes of some engines only is spelled out: it may be their own to
// them.
std::string Joined(const std::vector<std::string>& seen) {
  std::string joined;
  for (const std::string& piece : seen) joined += piece;
  return joined;
}

std::string WithoutBlanks(std::string text) {
  std::erase_if(text, [](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); });
  return text;
}

TEST(EngineLexingTest, AnAcceptedTextIsReadAlikeByEveryEngine) {
  const std::vector<std::string> pieces = {
      "a",  "E",  "e",    "N",   "x", "1",  "'",  "'", "'", "''", "\\", "\"",     "`",     "[",
      "]",  "$",  "$$",   "$t$", "#", "/*", "*/", "/", "*", "!",  "M!", "--",     "-",     "-- ",
      "\n", "\r", "\r\n", " ",   " ", ";",  ";",  ",", "(", ")",  "=",  "select", "drop t"};
  std::mt19937 random(20040726);
  int accepted = 0;
  for (int round = 0; round < 300'000; ++round) {
    std::string sql;
    const int count = 1 + static_cast<int>(random() % 14);
    for (int i = 0; i < count; ++i) sql += pieces[random() % pieces.size()];
    const ADODB::Statement statement = ADODB::SqlFragment(sql);
    ADODB::engine::CheckedStatement checked;
    try {
      checked = ADODB::engine::CheckText(statement, ADODB::engine::SqliteDialect());
    } catch (const automation::Error& error) {
      ASSERT_EQ(error.SqlState(), "42000") << sql;
      continue;
    }
    ++accepted;
    std::string expected;
    for (const auto& token : checked.list.tokens) expected += token.In(checked.sql);
    for (const Reading& reading : kReadings) {
      std::vector<std::string> seen = Seen(sql, reading);
      // An end that nothing follows is cut off.
      while (!seen.empty() && seen.back() == ";") seen.pop_back();
      ASSERT_EQ(WithoutBlanks(Joined(seen)), WithoutBlanks(expected)) << reading.engine << ": " << sql;
      for (const std::string& piece : seen) ASSERT_NE(piece, ";") << reading.engine << ": " << sql;
    }
  }
  EXPECT_GT(accepted, 10'000);
}

}  // namespace
