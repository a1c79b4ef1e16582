#include "effects/recorder.hpp"

#include <gmock/gmock.h>

#include "tests/effects/heard_lines.hpp"
#include "tests/support/raised_error.hpp"

namespace {

using effects::Recorder;
using orvane_test::ErrorOf;
using orvane_test::HeardLines;
using testing::ElementsAre;
using testing::IsEmpty;

const effects::MailSending kCustomerMail{"a@x", "Case 26"};

class Numbers final : public effects::Listener {
 public:
  void OnEntry(const effects::EntryPtr& entry) override { all.push_back(entry->seq); }
  std::vector<std::uint64_t> all;
};

TEST(RecorderTest, EveryLineHasTheNextNumber) {
  Recorder recorder({});
  Numbers numbers;
  recorder.Add(numbers);
  recorder.Start({});
  recorder.RecordFailure(recorder.Record(kCustomerMail),
                         automation::Error(automation::ErrorNumber::DiskFull));
  recorder.ErrorLogged("entry");
  recorder.End(0);
  EXPECT_THAT(numbers.all, ElementsAre(1U, 2U, 3U, 4U, 5U));
}

TEST(RecorderTest, WhatOneListenerRefusesTheOthersHearAsFailed) {
  Recorder recorder({});
  HeardLines first;
  HeardLines second;
  HeardLines third;
  second.refuses = true;
  recorder.Add(first);
  recorder.Add(second);
  recorder.Add(third);
  bool done = false;
  EXPECT_EQ(ErrorOf([&] { recorder.Do(kCustomerMail, [&] { done = true; }); }).Number(), 61);
  EXPECT_FALSE(done);
  EXPECT_EQ(first.all.size(), 2U);
  EXPECT_EQ(first.all[1], R"j({"op":"failed","of":1,"error":"Disk full (61)","outcome":"no"})j");
  EXPECT_THAT(third.all, IsEmpty());
  EXPECT_THAT(recorder.CountsSoFar().All(), IsEmpty());
  second.refuses = false;
  recorder.Record(kCustomerMail);
  EXPECT_EQ(third.all.size(), 1U);
}

TEST(RecorderTest, KnownEntriesOfTheErrorLogAreToldApart) {
  Recorder recorder({.isKnownEntry = [](std::string_view text) { return text == "424"; }});
  HeardLines heard;
  recorder.Add(heard);
  recorder.ErrorLogged("424");
  recorder.ErrorLogged("other");
  EXPECT_THAT(heard.all,
              ElementsAre(R"j({"op":"log","text":"424","known":true})j", R"j({"op":"log","text":"other"})j"));
  EXPECT_EQ(recorder.CountsSoFar().LogTexts(), 1U);
  EXPECT_EQ(recorder.CountsSoFar().KnownLogTexts(), 1U);
}

TEST(RecorderTest, RowsOfATransactionThatIsRolledBackDoNotCount) {
  Recorder recorder({});
  recorder.RowChanges(ADODB::Change::Delete, "T", {}, std::nullopt);
  recorder.Begin();
  recorder.RowsChange(ADODB::Change::Delete, "T", {{}, {}}, {});
  recorder.Record(kCustomerMail);
  recorder.Rollback();
  recorder.Begin();
  const auto failed = recorder.RowChanges(ADODB::Change::Delete, "T", {}, std::nullopt);
  recorder.Failed(failed, automation::Error(automation::ErrorNumber::DiskFull));
  recorder.RowsChange(ADODB::Change::Delete, "T", {{}, {}, {}}, {});
  recorder.Commit();
  const effects::Counts& counts = recorder.CountsSoFar();
  EXPECT_EQ(counts.Of("row.delete").done, 1U);
  EXPECT_EQ(counts.Of("row.delete").failed, 1U);
  EXPECT_EQ(counts.Of("rows.delete").done, 3U);
  EXPECT_EQ(counts.Of("mail.send").done, 1U) << "a mail cannot be taken back";
}

TEST(RecorderTest, RowsOfACommitThatWasNotAnsweredAreUnknown) {
  Recorder recorder({});
  recorder.Begin();
  recorder.RowsChange(ADODB::Change::Delete, "T", {{}, {}}, {});
  automation::Error error(automation::ErrorNumber::DeviceIoError);
  error.WithOutcome(automation::Outcome::Unknown);
  recorder.Failed(recorder.Commit(), error);
  recorder.Rollback();
  EXPECT_EQ(recorder.CountsSoFar().Of("rows.delete").unknown, 2U);
  EXPECT_EQ(recorder.CountsSoFar().Of("rows.delete").done, 0U);
  EXPECT_EQ(recorder.CountsSoFar().Of("commit").unknown, 1U);
}

}  // namespace
