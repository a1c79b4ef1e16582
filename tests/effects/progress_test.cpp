#include "effects/progress.hpp"

#include <gmock/gmock.h>

#include <sstream>

namespace {

using effects::Progress;
using effects::ProgressState;
using effects::ProgressText;
using testing::HasSubstr;
using testing::MatchesRegex;

TEST(ProgressTest, TellsWhatWasDoneHowFastAndForHowLong) {
  ProgressState state{.job = "CleanUp", .taken = std::chrono::seconds(3725), .byKind = {}};
  EXPECT_EQ(ProgressText(state), "CleanUp: nothing changed yet, 1:02:05");
  state.taken = std::chrono::seconds(10);
  state.byKind = {{"files deleted", 31}, {"rows deleted", 1234567}};
  state.total = 1234598;
  EXPECT_EQ(ProgressText(state),
            "CleanUp: 31 files deleted, 1,234,567 rows deleted; 123,459 a second, 0:00:10");
}

TEST(ProgressTest, TellsTheShareDoneWhereTheTotalIsKnown) {
  ProgressState state{.job = "X", .taken = std::chrono::seconds(1), .byKind = {{"mails sent", 45}}};
  state.total = 45;
  state.expected = 100;
  EXPECT_THAT(ProgressText(state), HasSubstr(", 45 %,"));
  state.total = 200;
  EXPECT_THAT(ProgressText(state), HasSubstr(", 99 %,")) << "it has not ended";
  state.ended = true;
  EXPECT_THAT(ProgressText(state), HasSubstr(", 100 %,"));
}

TEST(ProgressTest, TheShareIsOneOfWhatWasExpectedBeforeTheRunBegan) {
  effects::Counts counts;
  counts.Add(effects::MailSending{});
  counts.Add(effects::TransactionStep{effects::TransactionStep::Kind::Begin});
  counts.Add(effects::RowsChange{ADODB::Change::Delete, "T", {{}, {}, {}}, false, {}});
  EXPECT_EQ(effects::ProgressTotal(counts), 4U) << "transactions are no progress";

  std::ostringstream out;
  {
    Progress progress(out, {.form = Progress::Form::LineEach, .atEnd = true});
    progress.Expect(effects::ProgressTotal(counts));
    effects::Recorder recorder({});
    recorder.Add(progress);
    recorder.Start({.job = "Solve"});
    recorder.Record(effects::MailSending{});
    recorder.End(75);
  }
  EXPECT_THAT(out.str(), HasSubstr(" a second, 25 %, 0:00:00"));
}

TEST(ProgressTest, FailuresAreTakenBack) {
  std::ostringstream out;
  {
    Progress progress(out, {.form = Progress::Form::LineEach, .atEnd = true});
    effects::Recorder recorder({});
    recorder.Add(progress);
    recorder.Start({.job = "Solve"});
    recorder.RecordFailure(recorder.Record(effects::MailSending{}),
                           automation::Error(automation::ErrorNumber::DiskFull));
    recorder.RowsChange(ADODB::Change::Delete, "T", {{}, {}, {}}, {});
    recorder.Begin();
    recorder.End(0);
  }
  EXPECT_THAT(out.str(),
              MatchesRegex("Solve: 0 mails sent, 3 rows deleted; [0-9,]+ a second, 0:00:[0-9][0-9]\n"));
}

TEST(ProgressTest, WithoutALineAtTheEndAShortRunSaysNothing) {
  std::ostringstream out;
  {
    Progress progress(out, {.form = Progress::Form::LineEach});
    effects::Recorder recorder({});
    recorder.Add(progress);
    recorder.Start({.job = "Solve"});
    recorder.Record(effects::MailSending{});
    recorder.End(0);
  }
  EXPECT_EQ(out.str(), "");
}

// A stream that says when it was written to.
class Seen : public std::stringbuf {
 public:
  void Await(const std::string& text) {
    std::unique_lock lock(mutex_);
    const bool came = written_.wait_for(lock, std::chrono::minutes(1),
                                        [&] { return all_.find(text) != std::string::npos; });
    EXPECT_TRUE(came) << all_;
  }
  std::string All() {
    const std::lock_guard lock(mutex_);
    return all_;
  }

 protected:
  std::streamsize xsputn(const char* text, std::streamsize count) override {
    const std::lock_guard lock(mutex_);
    all_.append(text, static_cast<std::size_t>(count));
    written_.notify_all();
    return count;
  }
  int overflow(int c) override {
    const char text = static_cast<char>(c);
    xsputn(&text, 1);
    return c;
  }

 private:
  std::mutex mutex_;
  std::condition_variable written_;
  std::string all_;
};

TEST(ProgressTest, TheLineOnATerminalIsTakenOffForOthers) {
  Seen seen;
  std::ostream out(&seen);
  Progress progress(out,
                    {.form = Progress::Form::OneLine, .interval = std::chrono::milliseconds(1), .width = 20});
  effects::Recorder recorder({});
  recorder.Add(progress);
  recorder.Start({.job = "Archive"});
  seen.Await("\rArchive: nothing c");
  {
    const Progress::Pause pause(progress);
    const std::string all = seen.All();
    EXPECT_TRUE(all.ends_with("\r" + std::string(19, ' ') + "\r")) << all;
  }
  recorder.End(0);
  EXPECT_TRUE(seen.All().ends_with("\r"));
}

}  // namespace
