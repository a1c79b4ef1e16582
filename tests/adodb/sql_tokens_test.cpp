#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "platform/adodb/sql/tokens.hpp"

namespace {

using ADODB::engine::Tokenize;
using ADODB::engine::TokenKind;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> Texts(std::string_view sql) {
  std::vector<std::string> texts;
  for (const auto& token : Tokenize(sql).tokens) texts.emplace_back(token.In(sql));
  return texts;
}

TEST(SqlTokensTest, TakesAStatementApart) {
  EXPECT_THAT(Texts("select Q_ID,a.B from T where x<=-1.5e3 and y<>'it''s'"),
              ElementsAre("select", "Q_ID", ",", "a", ".", "B", "from", "T", "where", "x", "<=", "-", "1.5e3",
                          "and", "y", "<>", "'it''s'"));
}

TEST(SqlTokensTest, TellsTextsFromQuotedNames) {
  const std::string_view sql = "'a' \"b\"\"c\" [d e] `f`";
  const auto tokens = Tokenize(sql).tokens;
  ASSERT_EQ(tokens.size(), 4u);
  EXPECT_EQ(tokens[0].kind, TokenKind::Text);
  for (std::size_t i = 1; i < 4; ++i) EXPECT_EQ(tokens[i].kind, TokenKind::QuotedName);
  EXPECT_EQ(tokens[1].In(sql), "\"b\"\"c\"");
}

TEST(SqlTokensTest, LeavesOutCommentsAndBlanks) {
  EXPECT_THAT(Texts("a -- b 'c\n/* d; ' */ e"), ElementsAre("a", "e"));
  EXPECT_THAT(Texts(" \t\r\n"), IsEmpty());
  EXPECT_THAT(Texts("-- only"), IsEmpty());
}

TEST(SqlTokensTest, TakesABackslashAsAnOrdinaryCharacter) {
  EXPECT_THAT(Texts("'a\\' b"), ElementsAre("'a\\'", "b"));
}

TEST(SqlTokensTest, TellsWhatDoesNotEnd) {
  EXPECT_EQ(Tokenize("a 'b").unterminated, 2u);
  EXPECT_EQ(Tokenize("a 'b''").unterminated, 2u);
  EXPECT_EQ(Tokenize("a \"b").unterminated, 2u);
  EXPECT_EQ(Tokenize("a /* b").unterminated, 2u);
  EXPECT_EQ(Tokenize("a 'b'").unterminated, std::string_view::npos);
}

TEST(SqlTokensTest, MarksWhatEnginesReadDifferently) {
  for (const char* sql :
       {"a /* b /* c */", "a /* b /*/", "a /*! b */", "a /*M! b */", "a --b", "a -- b\rc\n", "a # b", "a#b",
        "a $$b$$", "a $t$b$t$", "a E'b\\'", "a e'\\'", "a [b'c]", "a `b;`", "a [b$$c]"}) {
    EXPECT_NE(Tokenize(sql).ambiguous, std::string_view::npos) << sql;
  }
  for (const char* sql : {"a /* b */ c", "a /* ' */", "a -- b\r\nc", "a --", "a$b", "N'b\\'", "THE'b\\'",
                          "E'b'", "[b c]", "`b`", "\"b'c\"", "'$$ # /* -- [\\'"}) {
    EXPECT_EQ(Tokenize(sql).ambiguous, std::string_view::npos) << sql;
  }
}

TEST(SqlTokensTest, KeepsLettersOfEveryAlphabetInNames) {
  EXPECT_THAT(Texts("gr\xC3\xB6\xC3\x9F"
                    "e=1"),
              ElementsAre("gr\xC3\xB6\xC3\x9F"
                          "e",
                          "=", "1"));
}

}  // namespace
