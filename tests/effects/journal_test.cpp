#include "effects/journal.hpp"

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <fstream>

#include "effects/journal_files.hpp"
#include "tests/support/raised_error.hpp"
#include "tests/support/temporary_folder.hpp"

namespace {

namespace fs = std::filesystem;
using effects::Journal;
using effects::JournalsIn;
using effects::Recorder;
using orvane_test::ErrorOf;
using orvane_test::TemporaryFolder;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr auto kBegun = std::chrono::sys_days(std::chrono::year(2026) / 11 / 22) + std::chrono::hours(3);

class JournalTest : public testing::Test {
 protected:
  std::unique_ptr<Journal> Begin(std::string_view job = "Archive", std::size_t reserve = 4096) const {
    return std::make_unique<Journal>(folder_.Path() / "journal", kBegun, 4711, job, reserve);
  }
  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const auto& item : fs::directory_iterator(folder_.Path() / "journal")) {
      names.push_back(item.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
  }

  TemporaryFolder folder_;
};

TEST_F(JournalTest, EachLineIsInTheFileBeforeItsEffectTakesPlace) {
  const auto journal = Begin();
  Recorder recorder({});
  recorder.Add(*journal);
  recorder.Do(effects::MailSending{"a@x", "Case 26"}, [&] {
    EXPECT_THAT(TemporaryFolder::Read(journal->Path()), HasSubstr("\"op\":\"mail.send\",\"to\":\"a@x\""));
  });
}

TEST_F(JournalTest, ItIsItsOwnersAlone) {
  const auto journal = Begin();
  struct stat status {};
  ASSERT_EQ(stat(journal->Path().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(JournalTest, TheReserveGoesWithTheJournal) {
  {
    const auto journal = Begin();
    EXPECT_THAT(Names(), ElementsAre("20261122T030000Z-4711-Archive.jsonl",
                                     "20261122T030000Z-4711-Archive.jsonl.reserve"));
    EXPECT_EQ(fs::file_size(journal->Path() + ".reserve"), 4096U);
  }
  EXPECT_THAT(Names(), ElementsAre("20261122T030000Z-4711-Archive.jsonl"));
}

TEST_F(JournalTest, TwoRunsOfOneSecondHaveTwoNames) {
  const auto first = Begin();
  const auto second = Begin();
  EXPECT_EQ(first->Run(), "20261122T030000Z-4711-Archive");
  EXPECT_EQ(second->Run(), "20261122T030001Z-4711-Archive");
}

TEST_F(JournalTest, OneThatCannotBeMadeRaises) {
  std::ofstream(folder_.Path() / "journal") << "a file";
  EXPECT_THROW(Begin(), std::system_error);
}

// The size that files may have stands for the room on a disk.
class FullDisk {
 public:
  explicit FullDisk(rlim_t bytes) {
    signal(SIGXFSZ, SIG_IGN);
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit{bytes, before_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FullDisk() { setrlimit(RLIMIT_FSIZE, &before_); }

 private:
  rlimit before_{};
};

TEST_F(JournalTest, WhatFindsNoRoomIsNotDoneAndLeavesNoPartOfALine) {
  const auto journal = Begin();
  Recorder recorder({});
  recorder.Add(*journal);
  recorder.Record(effects::MailSending{"a@x", "short"});
  const std::string before = TemporaryFolder::Read(journal->Path());
  EXPECT_EQ(journal->Trouble(), "");
  bool done = false;
  {
    const FullDisk full(before.size() + 100);
    const auto refused = ErrorOf([&] {
      recorder.Do(effects::MailSending{"a@x", std::string(1000, 'x')}, [&] { done = true; });
    });
    EXPECT_THAT(refused.Description(), HasSubstr("The journal takes no more lines: "));
  }
  EXPECT_FALSE(done);
  EXPECT_EQ(TemporaryFolder::Read(journal->Path()), before);
  EXPECT_THAT(journal->Trouble(), HasSubstr("The journal takes no more lines: "));
  EXPECT_THAT(Names(), ElementsAre("20261122T030000Z-4711-Archive.jsonl")) << "the reserve was given up";
}

TEST_F(JournalTest, OldJournalsAndWhatKilledRunsLeftAreRemoved) {
  fs::create_directory(folder_.Path() / "journal");
  for (const char* name : {"20260823T025959Z-1-Archive.jsonl", "20260824T030000Z-1-Archive.jsonl",
                           "20200101T000000Z-1-CleanUp.jsonl", "20261122T030000Z-9-CleanUp.jsonl.reserve",
                           "notes.txt", "20200101T000000Z-x-CleanUp.jsonl", "2020.jsonl"}) {
    std::ofstream(folder_.Path() / "journal" / name) << "x";
  }
  effects::RemoveOldJournals(folder_.Path() / "journal", kBegun, 90);
  EXPECT_THAT(Names(), ElementsAre("2020.jsonl", "20200101T000000Z-x-CleanUp.jsonl",
                                   "20260824T030000Z-1-Archive.jsonl", "notes.txt"));
  effects::RemoveOldJournals(folder_.Path() / "none", kBegun, 90);
}

TEST_F(JournalTest, JournalsAreListedInTheOrderOfTime) {
  fs::create_directory(folder_.Path() / "journal");
  for (const char* name : {"20260824T030000Z-10-CleanUp.jsonl", "20260823T030000Z-2-Archive.jsonl",
                           "20260824T030000Z-9-Archive.jsonl", "20261399T030000Z-9-Archive.jsonl"}) {
    std::ofstream(folder_.Path() / "journal" / name) << "x";
  }
  fs::create_directory(folder_.Path() / "journal" / "20260825T030000Z-9-Archive.jsonl");
  std::vector<std::string> runs;
  for (const effects::JournalFile& journal : JournalsIn(folder_.Path() / "journal"))
    runs.push_back(journal.run);
  EXPECT_THAT(runs, ElementsAre("20260823T030000Z-2-Archive", "20260824T030000Z-10-CleanUp",
                                "20260824T030000Z-9-Archive"));
  EXPECT_THAT(JournalsIn(folder_.Path() / "none"), IsEmpty());
  const auto parsed = effects::ParseRunName("20260823T030000Z-2-Archive");
  ASSERT_TRUE(parsed);
  EXPECT_EQ(parsed->process, 2);
  EXPECT_EQ(parsed->job, "Archive");
  for (const char* none : {"", "20260823T030000Z-2-", "20260823T030000Z--Archive", "20260823T030000Z-2-../x",
                           "20260823T250000Z-2-Archive", "-0260823T030000Z-2-Archive"}) {
    EXPECT_FALSE(effects::ParseRunName(none)) << none;
  }
}

}  // namespace
