// The table of engines: each entry is complete, a skeleton is told what it lacks, and the users' table of
// quirks is the one that the conformance tests go by.
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "platform/adodb/engines/table.hpp"
#include "tests/adodb/conformance/quirks.hpp"
#include "tests/doubles/skeleton_engine/dialect.hpp"
#include "tests/doubles/skeleton_engine/failures.hpp"
#include "tests/doubles/skeleton_engine/traits.hpp"
#include "tests/support/test_runtime.hpp"

namespace {

using namespace ADODB::engine;
using orvane_test::Quirk;
using orvane_test::Quirks;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const std::filesystem::path kSource = ORVANE_SOURCE_DIR;

// What an entry of the table has to bring along before the conformance tests can run, and does not.
std::vector<std::string> Lacks(const EngineEntry& entry) {
  std::vector<std::string> lacks;
  const auto needs = [&](const char* what, const std::function<bool()>& has) {
    try {
      if (has()) return;
    } catch (const automation::Error&) {
      // Not written yet.
    }
    lacks.emplace_back(what);
  };
  const Dialect& dialect = entry.dialect();
  const Traits& traits = entry.traits();
  const Failures& failures = entry.failures();
  const bool isEmbedded = traits.provider != Traits().provider;
  needs("dialect: DaysLater", [&] { return !dialect.DaysLater("1", "A").empty(); });
  needs("dialect: NullReplaced", [&] { return !dialect.NullReplaced("A", "B").empty(); });
  needs("dialect: Joined", [&] { return !dialect.Joined({"A", "B"}).empty(); });
  needs("dialect: Timestamp", [&] { return !dialect.Timestamp("2004-07-26 09:05:03").empty(); });
  needs("dialect: StillReads", [&] {
    for (const ColumnType type :
         {ColumnType::Boolean, ColumnType::Integer, ColumnType::Decimal, ColumnType::Double,
          ColumnType::DateTime, ColumnType::Text, ColumnType::Binary}) {
      if (dialect.StillReads("A", type).find('?') == std::string::npos) return false;
    }
    return true;
  });
  needs("dialect: ComparisonKey", [&] { return !dialect.ComparisonKey("a", Column()).empty(); });
  needs("dialect: SyntaxError", [&] { return dialect.SyntaxError("a").SqlState().starts_with("42"); });
  needs("traits: drivers", [&] { return isEmbedded || !traits.drivers.empty(); });
  needs("traits: describe", [&] { return isEmbedded || traits.describe != nullptr; });
  needs("failures: losesSession", [&] { return failures.losesSession != nullptr; });
  needs("failures: leavesCommitOpen", [&] { return failures.leavesCommitOpen != nullptr; });
  needs("failures: needsPreparingAnew", [&] { return failures.needsPreparingAnew != nullptr; });
  const std::string name(entry.name);
  for (const char* end : {".sql", "-ecatalog.sql"}) {
    if (!std::filesystem::exists(kSource / "schema" / (name + end))) lacks.push_back("schema/" + name + end);
  }
  try {
    orvane_test::QuirksOf(name);
  } catch (const std::invalid_argument&) {
    lacks.emplace_back("quirks");
  }
  return lacks;
}

TEST(EngineTableTest, EveryEntryIsComplete) {
  const orvane_test::TestRuntime runtime;
  for (const EngineEntry& entry : Engines()) EXPECT_THAT(Lacks(entry), IsEmpty()) << entry.name;
}

TEST(EngineTableTest, ASkeletonIsToldWhatItLacks) {
  const orvane_test::TestRuntime runtime;
  EXPECT_THAT(
      Lacks({"skeleton", &SkeletonDialect, &SkeletonTraits, &SkeletonFailures}),
      ElementsAre("dialect: DaysLater", "dialect: NullReplaced", "dialect: Joined", "dialect: Timestamp",
                  "dialect: StillReads", "dialect: ComparisonKey", "dialect: SyntaxError", "traits: drivers",
                  "traits: describe", "failures: losesSession", "failures: leavesCommitOpen",
                  "failures: needsPreparingAnew", "schema/skeleton.sql", "schema/skeleton-ecatalog.sql",
                  "quirks"));
}

TEST(EngineTableTest, FindsAnEngineByItsProviderItsDriverOrItsOwnName) {
  const auto name = [](std::string_view text) {
    const EngineEntry* entry = EngineOf(ConnectionString::Parse(text));
    return entry == nullptr ? "" : entry->name;
  };
  EXPECT_EQ(name("provider=sqlite"), "sqlite");
  EXPECT_EQ(name("Driver={Postgres}"), "postgresql");
  EXPECT_EQ(name("Provider=MSDASQL;Driver=libmaodbc.so"), "mariadb");
  EXPECT_EQ(name("DSN=suite"), "");
  EXPECT_EQ(name("Provider=Other"), "");
  EXPECT_EQ(EngineOfDriver("Microsoft SQL Server")->name, "sqlserver");
}

// --- The users' table ---

std::string Row(const std::string& title, const std::function<std::string(const Quirks&)>& cell) {
  std::string row = "| " + title + " |";
  for (const Quirks& quirks : orvane_test::AllQuirks()) row += " " + cell(quirks) + " |";
  return row + "\n";
}

constexpr std::pair<const char*, Quirk Quirks::*> kRows[] = {
    {"`=` between strings ignores case", &Quirks::textIgnoresCase},
    {"`=` between strings ignores trailing spaces", &Quirks::textIgnoresTrailingBlanks},
    {"A keyset on a table without a primary key loses rows that others change",
     &Quirks::losesChangedRowsWithoutKey},
    {"A failed statement ends its transaction", &Quirks::failureEndsTransaction},
    {"A column takes values of other types than declared", &Quirks::storesAnyType},
    {"A writer waits for every other writer", &Quirks::locksWholeDatabase},
};
static_assert(sizeof(Quirks) == sizeof(Quirks::engine) + std::size(kRows) * sizeof(Quirk),
              "each quirk has its row");

std::string TableOfQuirks() {
  std::string head = "| |";
  std::string line = "|---|";
  for (const EngineEntry& entry : Engines()) {
    head += " " + std::string(entry.dialect().Name()) + " |";
    line += "---|";
  }
  std::string table = head + "\n" + line + "\n";
  for (const auto& [title, quirk] : kRows) {
    table += Row(title, [quirk = quirk](const Quirks& quirks) {
      return quirks.*quirk ? "yes: " + std::string((quirks.*quirk).because) : std::string("no");
    });
  }
  return table;
}

TEST(EngineTableTest, TheUsersTableShowsTheQuirksAsTheyAre) {
  std::ifstream file(kSource / "docs" / "databases.md");
  const std::string document{std::istreambuf_iterator<char>(file), {}};
  EXPECT_THAT(document, HasSubstr("\n\n" + TableOfQuirks() + "\n"));
  for (std::size_t i = 0; i < Engines().size(); ++i) {
    EXPECT_EQ(orvane_test::AllQuirks()[i].engine, Engines()[i].name);
  }
}

}  // namespace
