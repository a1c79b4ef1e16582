#include "run/lock/suite_lock.hpp"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>
#include <system_error>

#include "tests/support/raised_error.hpp"
#include "tests/support/temporary_folder.hpp"

namespace {

using orvane_lock::Busy;
using orvane_lock::FileLock;
using orvane_lock::Holder;
using orvane_lock::SuiteLock;
using orvane_test::TemporaryFolder;

const Holder kSomebody{.process = 42, .host = "alpha", .job = "Archive", .since = "2026-11-22 00:30:00"};

class FileLockTest : public testing::Test {
 protected:
  TemporaryFolder folder_;
  const std::filesystem::path file_ = folder_.Path() / ".lock";
};

TEST_F(FileLockTest, IsHeldByOneAtATime) {
  auto first = FileLock::TryTake(file_, kSomebody);
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(FileLock::TryTake(file_, kSomebody), nullptr);
  first.reset();
  EXPECT_NE(FileLock::TryTake(file_, kSomebody), nullptr);
}

TEST_F(FileLockTest, SaysWhoHoldsIt) {
  EXPECT_EQ(FileLock::HolderOf(file_), std::nullopt) << "no file";
  auto held = FileLock::TryTake(file_, kSomebody);
  EXPECT_EQ(FileLock::HolderOf(file_), kSomebody);
  EXPECT_EQ(orvane_lock::Description(kSomebody),
            "process 42 on alpha (Archive, since 2026-11-22 00:30:00 UTC)");

  Holder shorter = kSomebody;
  shorter.job = "A";
  held->WriteHolder(shorter);
  EXPECT_EQ(FileLock::HolderOf(file_), shorter);
  held.reset();
  EXPECT_EQ(FileLock::HolderOf(file_), std::nullopt) << "what a free file says does not count";
}

TEST_F(FileLockTest, AHolderThatHasWrittenNothingYetIsAHolder) {
  const auto held = FileLock::TryTake(file_, kSomebody);
  std::filesystem::resize_file(file_, 0);
  EXPECT_EQ(FileLock::HolderOf(file_), Holder());
  EXPECT_EQ(orvane_lock::Description(Holder()), "another process");
}

TEST_F(FileLockTest, AFileThatWasRemovedMeanwhileIsMadeAnew) {
  const auto held = FileLock::TryTake(file_, kSomebody);
  std::filesystem::remove(file_);
  EXPECT_NE(FileLock::TryTake(file_, kSomebody), nullptr);
  EXPECT_TRUE(std::filesystem::exists(file_));
}

TEST_F(FileLockTest, RefusesWhatIsNoFile) {
  const auto code = [this] {
    try {
      FileLock::TryTake(file_, kSomebody);
      return std::error_code();
    } catch (const std::system_error& error) {
      return error.code();
    }
  };
  ASSERT_EQ(mkfifo(file_.c_str(), 0600), 0);
  EXPECT_EQ(code(), std::errc::invalid_argument);
  std::filesystem::remove(file_);
  std::filesystem::create_symlink(folder_.Path() / "elsewhere", file_);
  EXPECT_EQ(code(), std::errc::too_many_symbolic_link_levels);
  std::filesystem::remove(file_);
  std::filesystem::create_directory(file_);
  EXPECT_EQ(code(), std::errc::is_a_directory);
}

class SuiteLockTest : public FileLockTest {
 protected:
  SuiteLock::Request Request(std::chrono::seconds longest) const {
    return {.file = file_, .open = [] { return nullptr; }, .longest = longest};
  }
};

TEST_F(SuiteLockTest, ADatabaseWithoutALockNeedsNone) {
  const auto lock = SuiteLock::Take(Request(std::chrono::seconds(0)));
  EXPECT_EQ(FileLock::HolderOf(file_)->job, "") << "no job has begun";
  EXPECT_TRUE(lock->BeginJob("CleanUp"));
  EXPECT_FALSE(lock->IsLost());
  EXPECT_EQ(FileLock::HolderOf(file_)->job, "CleanUp");
}

TEST_F(SuiteLockTest, NamesTheHolderOnceAndGivesUpInTime) {
  const auto held = FileLock::TryTake(file_, kSomebody);
  auto request = Request(std::chrono::seconds(1));
  std::vector<std::string> told;
  request.waiting = [&told](const std::string& holder) { told.push_back(holder); };
  try {
    SuiteLock::Take(request);
    FAIL() << "it is held";
  } catch (const Busy& busy) {
    EXPECT_EQ(busy.what(), orvane_lock::Description(kSomebody));
  }
  EXPECT_THAT(told, testing::ElementsAre(orvane_lock::Description(kSomebody)));
}

TEST_F(SuiteLockTest, DoesNotWaitWhereItIsNotTo) {
  const auto held = FileLock::TryTake(file_, kSomebody);
  auto request = Request(std::chrono::seconds(0));
  request.waiting = [](const std::string&) { FAIL() << "it waited"; };
  EXPECT_THROW(SuiteLock::Take(request), Busy);
}

TEST_F(SuiteLockTest, AnErrorOfTheDatabaseThatIsNoSilencePassesThrough) {
  auto request = Request(std::chrono::seconds(0));
  const auto raise = [&request](const char* state) {
    request.open = [state]() -> std::unique_ptr<ADODB::engine::SessionLock> {
      throw automation::Error(1, "x", "words").WithEngineCodes(state, 0);
    };
  };
  for (const char* state : {"08001", "08S01", "57P03", "HY000"}) {
    raise(state);
    EXPECT_THROW(SuiteLock::Take(request), orvane_lock::Unreachable) << state;
  }
  for (const char* state : {"", "28P01", "42501", "IM002"}) {
    raise(state);
    const automation::Error error = orvane_test::ErrorOf([&] { SuiteLock::Take(request); });
    EXPECT_EQ(error.SqlState(), state);
    EXPECT_EQ(error.Description(), "words");
  }
}

}  // namespace
