// Strings through the ODBC provider: of every size, with every character, and what is refused.
#include <vector>

#include "tests/servers/odbc_provider_fixture.hpp"

namespace orvane_test {

TEST_P(OdbcProviderTest, CarriesTextsOfTenMegabytesUnharmed) {
  MakeTable();
  const std::string longText = TypeOfEngine("LONGTEXT", "`LONGTEXT`");
  std::string text;
  for (int i = 0; text.size() < 10'000'000; ++i) text += "Zeile " + std::to_string(i) + " é € 🙂\r\n";
  session_->Execute("INSERT INTO SAMPLE (ID, " + longText + ") VALUES (?, ?)", {std::int32_t{1}, text});
  // Compared without printing ten megabytes when it goes wrong.
  const Variant read = Single("SELECT " + longText + " FROM SAMPLE");
  EXPECT_EQ(automation::ToText(read).size(), text.size());
  EXPECT_TRUE(automation::ToText(read) == text);
}

TEST_P(OdbcProviderTest, ReadsTextsOfEverySizeAroundItsPieces) {
  MakeTable();
  const std::string longText = TypeOfEngine("LONGTEXT", "`LONGTEXT`");
  for (const std::size_t size : {0u, 1u, 2046u, 2047u, 2048u, 2049u, 4094u, 4095u, 4096u, 70'000u}) {
    for (const char* end : {"x", "🙂"}) {  // the latter may fall apart at the end of a piece
      const std::string text = std::string(size, 'a') + end;
      session_->Execute("DELETE FROM SAMPLE", {});
      session_->Execute("INSERT INTO SAMPLE (ID, " + longText + ") VALUES (?, ?)", {std::int32_t{1}, text});
      EXPECT_TRUE(Single("SELECT " + longText + " FROM SAMPLE") == Variant(text)) << size << end;
    }
  }
}

// Texts are fetched with their row until one is too long for that.
TEST_P(OdbcProviderTest, ReadsTextsOfEverySizeAroundTheMemoryThatTheyAreFetchedInto) {
  session_->Execute("CREATE TABLE TEXTS (ID INTEGER PRIMARY KEY, SHORTTEXT VARCHAR(2000), LONGTEXT_ " +
                        std::string(TypeOfEngine("TEXT)", "LONGTEXT) DEFAULT CHARACTER SET utf8mb4")),
                    {});
  std::vector<std::string> texts;
  for (const std::size_t size : {0u, 1u, 250u, 254u, 255u, 256u, 509u, 510u, 511u, 512u, 513u, 1020u, 1021u,
                                 1022u, 1023u, 1024u, 1025u, 1990u}) {
    for (const char* end : {"", "é", "🙂"}) texts.push_back(std::string(size, 'a') + end);
  }
  for (const std::size_t size : {1u, 127u, 128u, 254u, 255u, 256u, 257u, 341u, 342u, 512u, 1999u}) {
    for (const char* character : {"é", "€", "🙂"}) {
      std::string text;
      for (std::size_t i = 0; i < size; ++i) text += character;
      texts.push_back(text);
    }
  }
  for (std::size_t i = 0; i < texts.size(); ++i) {
    session_->Execute("INSERT INTO TEXTS VALUES (?, ?, ?)",
                      {static_cast<std::int32_t>(i), texts[i], texts[i]});
  }
  const auto expectRow = [&](const ADODB::engine::Rows& rows, std::size_t i) {
    EXPECT_EQ(rows.Value(1), Variant(static_cast<std::int32_t>(i)));
    for (const std::size_t column : {3u, 0u, 2u, 0u}) {  // in any order, and more than once
      EXPECT_EQ(automation::ToText(rows.Value(column)), texts[i]);
    }
  };
  const std::string select = "SELECT SHORTTEXT, ID, LONGTEXT_, SHORTTEXT FROM TEXTS ";
  for (const bool descending : {false, true}) {
    const auto rows = session_->Query(select + (descending ? "ORDER BY ID DESC" : "ORDER BY ID"), {});
    for (std::size_t i = 0; i < texts.size(); ++i) {
      ASSERT_TRUE(rows->Next());
      expectRow(*rows, descending ? texts.size() - 1 - i : i);
    }
    EXPECT_FALSE(rows->Next());
  }
  for (std::size_t i = 0; i < texts.size(); ++i) {
    const auto rows = session_->Query(select + "WHERE ID = " + std::to_string(i), {});
    ASSERT_TRUE(rows->Next());
    expectRow(*rows, i);
  }
}

// MariaDB's driver takes UTF-16 units whose lower byte is D8 to DB for halves of a pair, and reads on behind
// the text for each of them.
TEST_P(OdbcProviderTest, SendsEveryCharacterAndNothingBehindTheText) {
  MakeTable();
  const char* insert = "INSERT INTO SAMPLE (ID, SHORTTEXT, LONGTEXT) VALUES (?, ?, ?)";
  const std::string sql =
      OnPostgreSql() ? insert : "INSERT INTO SAMPLE (ID, SHORTTEXT, `LONGTEXT`) VALUES (?, ?, ?)";
  const std::string earlier(250, 'x');  // stands in the memory that the next ones are put into
  std::vector<std::string> texts = {earlier,      "様",           "Ø", "ØÙÚÛ", "Ørsted", "Bjørn Ø",
                                    "お客様各位", "ÛÛÛ🙂Û", ""};
  std::string all;
  for (char32_t unit = 0x80; unit < 0x800; ++unit) {
    all += static_cast<char>(0xC0 | (unit >> 6));
    all += static_cast<char>(0x80 | (unit & 0x3F));
    if (unit % 200 == 0) texts.push_back(std::exchange(all, {}));
  }
  for (std::size_t i = 0; i < texts.size(); ++i) {
    session_->Execute(sql, {static_cast<std::int32_t>(i + 1), texts[i], texts[i]});
  }
  const auto rows = session_->Query(OnPostgreSql() ? "SELECT SHORTTEXT, LONGTEXT FROM SAMPLE ORDER BY ID"
                                                   : "SELECT SHORTTEXT, `LONGTEXT` FROM SAMPLE ORDER BY ID",
                                    {});
  for (const std::string& text : texts) {
    ASSERT_TRUE(rows->Next());
    EXPECT_EQ(rows->Value(0), Variant(text));
    EXPECT_EQ(rows->Value(1), Variant(text));
  }
  for (const std::string& text : texts) {
    EXPECT_EQ(automation::ToInt32(Single("SELECT count(*) FROM SAMPLE WHERE SHORTTEXT = ?", {text})), 1)
        << text;
    EXPECT_EQ(automation::ToInt32(Single("SELECT count(*) FROM SAMPLE WHERE SHORTTEXT = '" + text + "'")), 1)
        << text;
    EXPECT_EQ(Single("SELECT '" + text + "'"), Variant(text));
    EXPECT_EQ(Single("SELECT 1 AS \"x\" -- " + text), Variant(std::int32_t{1}));
  }
}

TEST_P(OdbcProviderTest, RefusesAStatementThatWouldBeCutOff) {
  MakeTable();
  session_->Execute("INSERT INTO SAMPLE (ID) VALUES (1), (2)", {});
  using std::string_literals::operator""s;
  EXPECT_THAT(ErrorOf([&] { session_->Execute("DELETE FROM SAMPLE \0WHERE ID = 1"s, {}); }).Description(),
              HasSubstr("zero character"));
  EXPECT_THAT(ErrorOf([&] {
                session_->Execute("DELETE FROM SAMPLE \0WHERE ID = ?"s, {std::int32_t{1}});
              }).Description(),
              HasSubstr("zero character"));
  EXPECT_EQ(automation::ToInt32(Single("SELECT count(*) FROM SAMPLE")), 2);
}

TEST_P(OdbcProviderTest, TakesTextsOfAStatementAsTheyStand) {
  EXPECT_EQ(Single("SELECT 'C:\\Data\\ ends with \\'"), Variant("C:\\Data\\ ends with \\"));
  EXPECT_EQ(Single("SELECT 'it''s {ts \"here\"}; is it ? 🙂 é'"),
            Variant("it's {ts \"here\"}; is it ? 🙂 é"));
  EXPECT_EQ(Single("SELECT ''"), Variant(""));
}

TEST_P(OdbcProviderTest, RefusesTextThatIsNotUtf8) {
  MakeTable();
  const automation::Error error = ErrorOf(
      [&] { session_->Execute("INSERT INTO SAMPLE (SHORTTEXT) VALUES (?)", {std::string("caf\xE9")}); });
  EXPECT_EQ(error.SqlState(), "22021");
  EXPECT_EQ(Single("SELECT COUNT(*) FROM SAMPLE"), Variant(std::int32_t{0}));
}

TEST_P(OdbcProviderTest, RefusesATextThatDoesNotFit) {
  MakeTable();
  ErrorOf([&] { session_->Execute("INSERT INTO SAMPLE (SHORTTEXT) VALUES (?)", {std::string(300, 'x')}); });
  EXPECT_EQ(Single("SELECT COUNT(*) FROM SAMPLE"), Variant(std::int32_t{0}));
}

// Whatever else the string asks for: a backslash in front of a closing quote would take the quote with it.
TEST_P(OdbcProviderTest, ReadsABackslashAsItselfInEverySession) {
  const char* own = OnPostgreSql() ? ";ConnSettings=SET+standard_conforming_strings%3Doff"
                                   : ";INITSTMT={SET SESSION sql_mode='ANSI_QUOTES'}";
  const auto session = ADODB::odbc::MakeProvider()->Connect(
      ADODB::engine::ConnectionString::Parse(database_.ConnectionString() + own));
  const auto rows = session->Query(R"(SELECT 'a\', 'b\\c')", {});
  ASSERT_TRUE(rows->Next());
  EXPECT_EQ(rows->Value(0), Variant("a\\"));
  EXPECT_EQ(rows->Value(1), Variant("b\\\\c"));
}

TEST_P(OdbcProviderTest, TakesNoOtherCharacterForAQuote) {
  const char* own = OnPostgreSql() ? ";ConnSettings=SET+client_encoding+to+'LATIN1'" : ";CHARSET=utf8";
  for (const char* options : {"", own}) {
    const auto session = ADODB::odbc::MakeProvider()->Connect(
        ADODB::engine::ConnectionString::Parse(database_.ConnectionString() + options));
    for (const char* like : {"\u2018", "\u2019", "\u201B", "\u2032", "\u02BC", "\u02B9", "\u00B4", "\uFF07",
                             "\u0127", "\u2727", "\u5C27"}) {
      // A quote in its place would leave the second one alone.
      const std::string sql = std::string("SELECT 'a") + like + ", ' AS B";
      const auto rows = session->Query(sql, {});
      EXPECT_TRUE(rows->Next()) << sql;
    }
  }
}

TEST_P(OdbcProviderTest, RefusesACharacterSetThatMakesQuotes) {
  if (OnPostgreSql()) GTEST_SKIP() << "its driver speaks UTF-8 whatever the string says";
  const auto error = ErrorOf([this] {
    ADODB::odbc::MakeProvider()->Connect(
        ADODB::engine::ConnectionString::Parse(database_.ConnectionString() + ";CHARSET=latin1"));
  });
  EXPECT_EQ(error.Number(), 3001);
}

// Outside the first 65,536 characters each is a pair of UTF-16 units, the form in which texts travel.
TEST_P(OdbcProviderTest, TellsTextsOfSurrogatePairsApart) {
  session_->Execute(OnPostgreSql() ? "CREATE TABLE PAIRS (NAME VARCHAR(4) PRIMARY KEY, NOTE TEXT)"
                                   : "CREATE TABLE PAIRS (NAME VARCHAR(4) PRIMARY KEY, NOTE TEXT) DEFAULT "
                                     "CHARACTER SET utf8mb4 COLLATE utf8mb4_nopad_bin",
                    {});
  // The first and last of the range; two that share their first unit, and two that share their second.
  const std::vector<std::string> names = {"\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF", "🙂",   "🙃",
                                          "\xF0\x9F\xA1\x82", "🙂🙂🙂🙂", "a🙂b", "\xEE\x80\x80"};
  for (const std::string& name : names) {
    session_->Execute("INSERT INTO PAIRS (NAME, NOTE) VALUES (?, ?)", {name, "of " + name});
  }
  for (const std::string& name : names) {
    EXPECT_EQ(Single("SELECT NOTE FROM PAIRS WHERE NAME = ?", {name}), Variant("of " + name));
    EXPECT_EQ(Single("SELECT NAME FROM PAIRS WHERE NAME = '" + name + "'"), Variant(name));
    EXPECT_EQ(Single("SELECT NAME FROM PAIRS WHERE NOTE = ?", {"of " + name}), Variant(name));
  }
  EXPECT_EQ(ErrorOf([&] { session_->Execute("INSERT INTO PAIRS (NAME) VALUES (?)", {"🙂"}); }).SqlState(),
            TypeOfEngine("23505", "23000"));
  EXPECT_EQ(Single("SELECT CHAR_LENGTH(NAME) FROM PAIRS WHERE NAME = ?", {"🙂🙂🙂🙂"}),
            Variant(std::int32_t{4}));
  EXPECT_EQ(session_->Execute("DELETE FROM PAIRS WHERE NAME = ?", {"🙂"}), 1);
  EXPECT_EQ(Single("SELECT COUNT(*) FROM PAIRS"), Variant(static_cast<std::int32_t>(names.size() - 1)));
}

}  // namespace orvane_test
