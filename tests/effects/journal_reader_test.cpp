#include "effects/journal_reader.hpp"

#include <gmock/gmock.h>

#include <fstream>
#include <nlohmann/json.hpp>

#include "effects/journal.hpp"
#include "tests/support/temporary_folder.hpp"

namespace {

namespace fs = std::filesystem;
using effects::JournalError;
using orvane_test::TemporaryFolder;
using testing::ElementsAre;
using testing::HasSubstr;

class JournalReaderTest : public testing::Test {
 protected:
  // A run of three effects, one of which fails.
  fs::path Write(bool ends = true, std::string_view lastLogText = {}) const {
    effects::Journal journal(folder_.Path(), std::chrono::system_clock::now(), 4711, "Archive", 0);
    effects::Recorder recorder({});
    recorder.Add(journal);
    recorder.Start({.job = "Archive",
                    .preview = false,
                    .at = automation::DateTime::FromDate(2004, 7, 26),
                    .process = 4711,
                    .host = "alpha",
                    .version = "1.0"});
    recorder.RowsChange(ADODB::Change::Delete, "T", {{{"A", 1}}, {{"A", 2}}}, {});
    recorder.RecordFailure(recorder.Record(effects::MailSending{"a\n@x", "s"}),
                           automation::Error(automation::ErrorNumber::DiskFull));
    if (!lastLogText.empty()) recorder.Stopping(lastLogText);
    if (ends) recorder.End(75);
    return journal.Path();
  }
  static void Put(const fs::path& file, const std::string& text) {
    std::ofstream(file, std::ios::binary) << text;
  }
  static std::vector<std::string> Ops(const fs::path& file, bool whole = true) {
    std::vector<std::string> ops;
    EXPECT_EQ(effects::ReadJournal(file, [&](const auto& line) { ops.push_back(line["op"]); }), whole);
    return ops;
  }
  static std::string Problem(const fs::path& file) {
    try {
      effects::ReadJournal(file, [](const auto&) {});
    } catch (const JournalError& error) {
      EXPECT_THAT(error.what(), HasSubstr(file.string()));
      return error.what();
    }
    return "none";
  }

  TemporaryFolder folder_;
};

TEST_F(JournalReaderTest, GivesTheLinesAsTheyWereWritten) {
  const fs::path file = Write();
  EXPECT_THAT(Ops(file), ElementsAre("run.start", "rows.delete", "mail.send", "failed", "run.end"));
  effects::ReadJournal(file, [](const auto& line) {
    if (line["op"] == "mail.send") {
      EXPECT_EQ(line["to"], "a\n@x");
    }
  });
}

TEST_F(JournalReaderTest, ALastLineThatWasCutOffIsLeftOut) {
  const fs::path file = Write();
  const std::string whole = TemporaryFolder::Read(file);
  for (const std::size_t missing : {std::size_t{1}, std::size_t{2}, std::size_t{40}}) {
    Put(file, whole.substr(0, whole.size() - missing));
    EXPECT_THAT(Ops(file, false), ElementsAre("run.start", "rows.delete", "mail.send", "failed"));
    EXPECT_FALSE(effects::SummaryOf(file).end);
  }
}

TEST_F(JournalReaderTest, WhatIsNoJournalOfThisVersionIsToldWithItsPlace) {
  const fs::path file = Write();
  const std::string whole = TemporaryFolder::Read(file);
  const auto replaced = [&](const std::string& what, const std::string& with) {
    std::string text = whole;
    text.replace(text.find(what), what.size(), with);
    Put(file, text);
    return Problem(file);
  };
  EXPECT_THAT(replaced("{\"v\":1", "{\"v\":2"),
              HasSubstr("line 1 is of version 2; this program reads version 1"));
  EXPECT_THAT(replaced("\"op\"", "\"ob\""), HasSubstr("line 1 is none of a journal"));
  EXPECT_THAT(replaced("4711-Archive", "4712-Archive"), HasSubstr("line 1 is of another run"));
  EXPECT_THAT(replaced("\"seq\":2", "\"seq\":3"), HasSubstr("line 2 is out of its order"));
  EXPECT_THAT(replaced("\n", "\n{]\n"), HasSubstr("line 2 is none of a journal"));
  EXPECT_THAT(replaced("\n", "\n" + std::string(100'000, '[') + "\n"), HasSubstr("line 2 is none"));
  EXPECT_THAT(Problem(folder_.Path() / "20261122T030000Z-4711-Archive.jsonl"), HasSubstr("No such file"));
}

TEST_F(JournalReaderTest, MembersThatAreNotKnownArePassedOver) {
  const fs::path file = Write();
  std::string text = TemporaryFolder::Read(file);
  text.replace(text.find("\"op\""), 4, "\"later\":[1],\"op\"");
  Put(file, text);
  EXPECT_EQ(effects::SummaryOf(file).job, "Archive");
}

TEST_F(JournalReaderTest, ASummaryIsMadeOfTheFirstAndTheLastLine) {
  const effects::JournalSummary summary = effects::SummaryOf(Write());
  EXPECT_EQ(summary.job, "Archive");
  EXPECT_EQ(summary.at, "2004-07-26 00:00:00");
  EXPECT_EQ(summary.process, 4711);
  EXPECT_EQ(summary.host, "alpha");
  EXPECT_FALSE(summary.preview);
  ASSERT_TRUE(summary.end);
  EXPECT_EQ(summary.end->exit, 75);
  EXPECT_EQ(summary.end->done.at("rows.delete").at("T"), 2U);
  EXPECT_EQ(summary.end->failed.at("mail.send"), 1U);
  EXPECT_EQ(summary.lastLogText, "");
  EXPECT_EQ(effects::SummaryOf(Write(true, "the directory has gone")).lastLogText, "the directory has gone");
  EXPECT_FALSE(effects::SummaryOf(Write(false)).end);
}

TEST_F(JournalReaderTest, AFileWithoutALineHasNoSummary) {
  const fs::path file = folder_.Path() / "20261122T030000Z-4711-Archive.jsonl";
  for (const char* text : {"", "{\"v\":1"}) {
    Put(file, text);
    EXPECT_THROW(effects::SummaryOf(file), JournalError) << text;
  }
}

}  // namespace
