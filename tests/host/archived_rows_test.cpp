#include "host/restore/archived_rows.hpp"

#include <gmock/gmock.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "effects/journal.hpp"
#include "effects/journal_reader.hpp"
#include "tests/support/temporary_folder.hpp"

namespace orvane::host {
namespace {

using ADODB::Change;
using automation::Error;
using automation::ErrorNumber;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// The journal of a run, written as a run does.
class ArchivedRowsTest : public testing::Test {
 protected:
  explicit ArchivedRowsTest(const std::string& job = "Archive", bool rows = true)
      : recorder_({.rows = rows}) {
    journal_.emplace(folder_.Path(), std::chrono::system_clock::now(), 4711, job, 0);
    recorder_.Add(*journal_);
    recorder_.Start({.job = job});
  }

  effects::Recorder::Ticket Delete(const std::string& table, std::vector<std::int32_t> requests) {
    std::vector<ADODB::NamedRow> keys;
    std::vector<ADODB::NamedRow> before;
    for (const std::int32_t request : requests) {
      keys.push_back({{"Q_ID", request}});
      if (recorder_.WantsRows()) before.push_back({{"Q_ID", request}, {"Q_DESC", "text"}});
    }
    return recorder_.RowsChange(Change::Delete, table, std::move(keys), std::move(before));
  }
  static Error Failure(automation::Outcome outcome) {
    Error error(ErrorNumber::DeviceIoError);
    error.WithOutcome(outcome);
    return error;
  }

  // "TABLE:1,2" of each transaction, "?" behind one that may have been rolled back.
  std::vector<std::string> Read(bool ends = true) {
    if (ends) recorder_.End(0);
    const std::string path = journal_->Path();
    journal_.reset();
    std::vector<std::string> batches;
    const ArchivedRun run = ReadArchivedRun(path);
    withoutContent_ = run.rowsWithoutContent;
    for (const ArchivedBatch& batch : run.batches) {
      std::string& text = batches.emplace_back();
      for (const ArchivedRow& row : batch.rows) text += row.table[0] + std::to_string(row.request) + " ";
      if (!batch.isCertain) text += "?";
    }
    return batches;
  }

  orvane_test::TemporaryFolder folder_;
  effects::Recorder recorder_;
  std::optional<effects::Journal> journal_;
  std::size_t withoutContent_ = 0;
};

TEST_F(ArchivedRowsTest, CommittedDeletionsOfRequestsAndTransactionsAreTaken) {
  recorder_.Begin();
  Delete("TRANSACTIONS", {1, 1});
  Delete("QUESTIONHISTORY", {1, 2});
  recorder_.Commit();
  Delete("PREVIEW", {9});
  recorder_.RowChanges(Change::Delete, "QUESTIONHISTORY", {{"Q_ID", 3}}, ADODB::NamedRow{{"Q_ID", 3}});
  EXPECT_THAT(Read(), ElementsAre("T1 T1 Q1 Q2 ", "Q3 "));
  EXPECT_EQ(withoutContent_, 0U);
}

TEST_F(ArchivedRowsTest, WhatWasRolledBackOrHasFailedIsNot) {
  recorder_.Begin();
  Delete("QUESTIONHISTORY", {1});
  recorder_.Rollback();
  recorder_.Begin();
  recorder_.Failed(Delete("TRANSACTIONS", {2}), Failure(automation::Outcome::NotDone));
  Delete("QUESTIONHISTORY", {2});
  recorder_.Commit();
  recorder_.Begin();
  Delete("QUESTIONHISTORY", {3});
  recorder_.Failed(recorder_.Commit(), Failure(automation::Outcome::NotDone));
  recorder_.Rollback();
  EXPECT_THAT(Read(), ElementsAre("Q2 "));
}

TEST_F(ArchivedRowsTest, ACommitWithoutAnAnswerIsUncertain) {
  recorder_.Begin();
  Delete("QUESTIONHISTORY", {1});
  recorder_.Failed(recorder_.Commit(), Failure(automation::Outcome::Unknown));
  recorder_.Rollback();
  recorder_.Begin();
  Delete("QUESTIONHISTORY", {2});
  recorder_.Commit();
  EXPECT_THAT(Read(), ElementsAre("Q1 ?", "Q2 "));
}

TEST_F(ArchivedRowsTest, TheLastLineOfAKilledRunIsUncertain) {
  recorder_.Begin();
  Delete("QUESTIONHISTORY", {1});
  recorder_.Commit();
  recorder_.Begin();
  Delete("QUESTIONHISTORY", {2});
  recorder_.Commit();
  EXPECT_THAT(Read(false), ElementsAre("Q1 ", "Q2 ?"));
}

TEST_F(ArchivedRowsTest, ATransactionThatAKilledRunLeftOpenIsNotTaken) {
  recorder_.Begin();
  Delete("QUESTIONHISTORY", {1});
  recorder_.Commit();
  recorder_.Begin();
  Delete("QUESTIONHISTORY", {2});
  EXPECT_THAT(Read(false), ElementsAre("Q1 "));
}

TEST_F(ArchivedRowsTest, BrokenJournalsAreRefused) {
  journal_.reset();
  const std::string run = "20261122T030004Z-1-Archive";
  const auto problem = [&](const std::string& text) -> std::string {
    folder_.Write(run + ".jsonl", text);
    try {
      ReadArchivedRun(folder_.Path() / (run + ".jsonl"));
    } catch (const effects::JournalError& error) {
      return error.what();
    }
    return "none";
  };
  const std::string head = R"({"v":1,"run":")" + run + R"(","seq":1,"time":"x",)";
  EXPECT_THAT(problem("nonsense\n"), HasSubstr("line 1 is none of a journal"));
  EXPECT_THAT(problem(head + "\"op\":\"rows.delete\"}\n"), HasSubstr("not found"));
  EXPECT_THAT(
      problem(head + R"("op":"rows.delete","table":"TRANSACTIONS","keys":[{"T_ID":1}],"before":[]})" + "\n"),
      HasSubstr("out of range"));
}

class KeysOnlyTest : public ArchivedRowsTest {
 protected:
  KeysOnlyTest() : ArchivedRowsTest("Archive", false) {}
};

TEST_F(KeysOnlyTest, RowsWithoutTheirContentAreCounted) {
  Delete("QUESTIONHISTORY", {1, 2});
  EXPECT_THAT(Read(), IsEmpty());
  EXPECT_EQ(withoutContent_, 2U);
}

class OtherJobTest : public ArchivedRowsTest {
 protected:
  OtherJobTest() : ArchivedRowsTest("CleanUp") {}
};

TEST_F(OtherJobTest, ARunOfAnotherJobIsRefused) {
  Delete("QUESTIONHISTORY", {1});
  EXPECT_THROW(Read(), NothingToRestore);
}

}  // namespace
}  // namespace orvane::host
