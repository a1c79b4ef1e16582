// Which statements are known again, and which is given up for another.
#include "platform/adodb/session/statement_cache.hpp"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {

using ADODB::SqlFragment;
using ADODB::SqlValue;
using ADODB::Statement;
using ADODB::engine::FixedText;
using ADODB::engine::StatementCache;
using ADODB::engine::Translation;
using Kind = ADODB::engine::KnownStatement::Kind;

Statement Named(std::string_view name) {
  Statement sql = "select PARAM_VALUE from PARAMETERS where PARAM_NAME = '";
  sql += SqlValue(name);
  sql += "'";
  return sql;
}

StatementCache::Known KeepComposed(StatementCache& cache, const std::string& sql) {
  Translation translation;
  translation.text = sql;
  return cache.Keep(Kind::Composed, FixedText(sql), std::move(translation));
}

class Made : public ADODB::engine::PreparedStatement {
 public:
  explicit Made(int& alive) : alive_(alive) { ++alive_; }
  ~Made() override { --alive_; }

 private:
  int& alive_;
};

TEST(StatementCacheTest, KnowsABoundStatementWhateverItsValuesAre) {
  StatementCache cache;
  EXPECT_EQ(cache.Find(Kind::Bound, Named("one")), nullptr);
  const auto kept = cache.Keep(Kind::Bound, FixedText(Named("one")), {});
  KeepComposed(cache, "SELECT 1");
  EXPECT_EQ(cache.Find(Kind::Bound, Named("two")), kept);
  EXPECT_EQ(cache.Find(Kind::Bound, Named("three")), kept) << "asked for last";
  EXPECT_EQ(cache.Find(Kind::Bound, Named("one") + " "), nullptr);
}

TEST(StatementCacheTest, TakesNoStatementForOneOfAnotherKind) {
  StatementCache cache;
  const Statement sql = Named("one");
  const auto asWritten = cache.Keep(Kind::AsWritten, FixedText(sql.ToString()), {});
  const auto composed = KeepComposed(cache, sql.ToString());
  EXPECT_EQ(cache.Find(Kind::AsWritten, sql), asWritten);
  EXPECT_EQ(cache.FindComposed(sql.ToString()), composed);
  EXPECT_EQ(cache.Find(Kind::Bound, sql), nullptr);
  EXPECT_EQ(cache.Find(Kind::AsWritten, Named("two")), nullptr) << "with its values in its text";
}

TEST(StatementCacheTest, GivesUpWhatWasNotAskedForTheLongestAndNothingElse) {
  StatementCache cache;
  int alive = 0;
  const auto sql = [](std::size_t i) { return "SELECT " + std::to_string(i); };
  for (std::size_t i = 0; i < StatementCache::kMost; ++i) {
    KeepComposed(cache, sql(i))->prepared = std::make_unique<Made>(alive);
  }
  EXPECT_NE(cache.FindComposed(sql(0)), nullptr);
  KeepComposed(cache, "SELECT 'one more'");
  EXPECT_EQ(alive, static_cast<int>(StatementCache::kMost) - 1);
  EXPECT_NE(cache.FindComposed(sql(0)), nullptr);
  EXPECT_EQ(cache.FindComposed(sql(1)), nullptr);
  EXPECT_NE(cache.FindComposed(sql(2)), nullptr);
}

TEST(StatementCacheTest, KeepsNeitherLongTextsNorTranslationsForOneLocale) {
  StatementCache cache;
  const std::string text(StatementCache::kLongest + 1, 'x');
  EXPECT_NE(KeepComposed(cache, text), nullptr);
  EXPECT_EQ(cache.FindComposed(text), nullptr);
  Translation translation;
  translation.usesLocale = true;
  cache.Keep(Kind::AsWritten, FixedText(std::string_view("select 1")), std::move(translation));
  EXPECT_EQ(cache.Find(Kind::AsWritten, "select 1"), nullptr);
}

// A server is told of a statement only when it comes again; the embedded engine prepares each anyway.
TEST(StatementCacheTest, OffersAServerToPrepareWhatComesAgain) {
  StatementCache cache;
  const auto offers = [&](const std::string& sql, bool onServer, bool hasParameters) {
    StatementCache::Known known = cache.FindComposed(sql);
    if (!known) known = KeepComposed(cache, sql);
    return known->ForSession(onServer, hasParameters).Prepared() != nullptr;
  };
  EXPECT_TRUE(offers("SELECT A FROM T", false, false));
  EXPECT_FALSE(offers("SELECT B FROM T", true, false));
  EXPECT_TRUE(offers("SELECT B FROM T", true, false));
  EXPECT_TRUE(offers("SELECT C FROM T WHERE A = ?", true, true));
  for (const char* sql : {"SELECT * FROM T", "DELETE FROM T"}) {
    for (int i = 0; i < 3; ++i) EXPECT_FALSE(offers(sql, true, false)) << sql;
  }
}

}  // namespace
