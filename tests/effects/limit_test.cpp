#include "effects/limit.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using effects::Deletions;
using effects::ExcessesOf;
using effects::FileChange;
using effects::Limit;
using effects::RowsChange;
using testing::IsEmpty;

effects::RowsChange Rows(const char* table, std::size_t count, ADODB::Change change = ADODB::Change::Delete) {
  RowsChange rows;
  rows.change = change;
  rows.table = table;
  rows.keys.resize(count);
  return rows;
}

FileChange Deleted(const char* folder) {
  return {FileChange::Kind::Delete, std::string(folder) + "/a", folder};
}

TEST(LimitTest, IsANumberOrAShare) {
  EXPECT_EQ(Limit::Parse("500")->count, 500U);
  EXPECT_EQ(Limit::Parse("0")->count, 0U);
  EXPECT_EQ(Limit::Parse("5%")->percent, 5.0);
  EXPECT_EQ(Limit::Parse("0.5%")->percent, 0.5);
  EXPECT_EQ(Limit::Parse("5%")->Text(), "5%");
  EXPECT_EQ(Limit::Parse("500")->Text(), "500");
  for (const char* none : {"", "%", "x", "5x", "-1", "-1%", "101%", "nan%", "inf%", "5 %", " 5", "1e9", "0x5",
                           "99999999999999999999", "5%%"}) {
    EXPECT_FALSE(Limit::Parse(none)) << none;
  }
}

TEST(LimitTest, CountsEachTableAndEachFolderByItself) {
  effects::Counts counts;
  counts.Add(Rows("PROSPECT", 500));
  counts.Add(Rows("REMINDER", 499));
  counts.Add(effects::RowChange{ADODB::Change::Delete, "REMINDER", {}, false, {}});
  counts.Add(Deleted("Data/CHAT"));
  const auto holding = [](const Deletions&) { return std::uint64_t{1000}; };
  EXPECT_THAT(ExcessesOf(*Limit::Parse("500"), counts, holding), IsEmpty());
  const auto excesses = ExcessesOf(*Limit::Parse("499"), counts, holding);
  ASSERT_EQ(excesses.size(), 2U);
  EXPECT_EQ(excesses[0].deletions.subject, "PROSPECT");
  EXPECT_EQ(excesses[0].deletions.count, 500U);
  EXPECT_EQ(excesses[0].allowed, 499U);
  EXPECT_EQ(excesses[1].deletions.subject, "REMINDER");
  EXPECT_EQ(ExcessesOf(*Limit::Parse("0"), counts, holding).size(), 3U);
}

TEST(LimitTest, AShareIsOneOfWhatThereWas) {
  effects::Counts counts;
  counts.Add(Rows("PROSPECT", 50));
  const auto holding = [](const Deletions&) { return std::uint64_t{1000}; };
  EXPECT_THAT(ExcessesOf(*Limit::Parse("5%"), counts, holding), IsEmpty());
  const auto excesses = ExcessesOf(*Limit::Parse("4.9%"), counts, holding);
  ASSERT_EQ(excesses.size(), 1U);
  EXPECT_EQ(excesses[0].of, 1000U);
  EXPECT_EQ(excesses[0].allowed, 49U);
}

// A folder goes with all that is in it, and is one of few.
TEST(LimitTest, TakesSharesOfFilesAndFoldersApart) {
  effects::Counts counts;
  counts.Add(Deleted("Data/SRATTACHMENTS"));
  for (int i = 0; i < 3; ++i) {
    counts.Add(FileChange{FileChange::Kind::DeleteFolder, "/x/1Q", "Data/SRATTACHMENTS"});
  }
  const auto holding = [](const Deletions& deletions) {
    return std::optional<std::uint64_t>(deletions.of == Deletions::Of::Folders ? 10 : 1000);
  };
  const auto excesses = ExcessesOf(*Limit::Parse("29%"), counts, holding);
  ASSERT_EQ(excesses.size(), 1U);
  EXPECT_EQ(excesses[0].deletions.count, 3U);
  EXPECT_THAT(ExcessesOf(*Limit::Parse("30%"), counts, holding), IsEmpty());
  EXPECT_EQ(ExcessesOf(*Limit::Parse("3"), counts, holding).size(), 1U) << "four items";
}

TEST(LimitTest, TakesNoShareOfWhatNobodyCounts) {
  effects::Counts counts;
  counts.Add(effects::SharedChange{effects::SharedChange::Kind::Delete, "1Q", {}, "SRATTACHMENTS"});
  counts.Add(Deleted("SRATTACHMENTS"));
  const auto holding = [](const Deletions& deletions) {
    return deletions.of == Deletions::Of::Shared ? std::nullopt : std::optional<std::uint64_t>(1);
  };
  EXPECT_THAT(ExcessesOf(*Limit::Parse("100%"), counts, holding), IsEmpty());
  EXPECT_EQ(ExcessesOf(*Limit::Parse("0%"), counts, holding).size(), 1U);
  EXPECT_EQ(ExcessesOf(*Limit::Parse("0"), counts, holding).size(), 2U);
}

TEST(LimitTest, LeavesOutWhatIsEmptiedByRuleAndWhatIsNoDeletion) {
  effects::Counts counts;
  counts.Add(Rows("PREVIEW", 5000));
  counts.Add(Rows("preview", 5000));
  counts.Add(Rows("QUESTIONS", 5000, ADODB::Change::Update));
  counts.Add(Deleted("Data/HTML"));
  counts.Add(Deleted("Data/html"));
  counts.Add(FileChange{FileChange::Kind::Write, "/x/a", "Data/CHAT"});
  EXPECT_THAT(ExcessesOf(*Limit::Parse("0"), counts, [](const Deletions&) { return std::uint64_t{0}; }),
              IsEmpty());
}

TEST(LimitTest, DoesNotCountWhatSurelyFailed) {
  effects::Counts counts;
  const effects::Effect one = Deleted("Data/CHAT");
  counts.Add(one);
  counts.AddFailure(one, automation::Outcome::NotDone);
  EXPECT_THAT(ExcessesOf(*Limit::Parse("0"), counts, [](const Deletions&) { return std::uint64_t{0}; }),
              IsEmpty());
}

}  // namespace
