// Sessions of a preview: what they change is seen by each of them, and by nobody else.
#include "platform/adodb/session/preview_provider.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/adodb/engines/sqlite/embedded/private_copy.hpp"
#include "platform/adodb/engines/sqlite/embedded/provider.hpp"
#include "tests/adodb/preview_steps.hpp"
#include "tests/support/raised_error.hpp"
#include "tests/support/sqlite_database.hpp"
#include "tests/support/temporary_folder.hpp"

namespace orvane_test {
namespace {

namespace fs = std::filesystem;
using ADODB::engine::ConnectionString;
using ADODB::engine::PreviewFailure;
using ADODB::engine::Session;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class PreviewCopyTest : public testing::TestWithParam<bool> {
 protected:
  PreviewCopyTest() {
    database_->Run(
        "CREATE TABLE T(ID INTEGER PRIMARY KEY, NAME TEXT); INSERT INTO T VALUES(1,'one'),(2,'two')");
    provider_ = ADODB::engine::MakePreviewProvider(
        ADODB::sqlite::MakeCopyProvider(folder_.Path(), own_.Path()),
        {.failed = [this](const PreviewFailure& failure) { failures_.push_back(failure); }, .isCopy = true});
  }

  std::unique_ptr<Session> Connect() const {
    return provider_->Connect(ConnectionString::Parse("Data Source=suite.sqlite"));
  }

  std::map<std::string, std::string> FilesBeside() const {
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::directory_iterator(folder_.Path())) {
      if (entry.path().extension() != ".sqlite-shm") {
        files[entry.path().filename()] = TemporaryFolder::Read(entry.path());
      }
    }
    return files;
  }

  TemporaryFolder folder_;
  TemporaryFolder own_;
  std::unique_ptr<SqliteDatabase> database_ =
      std::make_unique<SqliteDatabase>(folder_.Path() / "suite.sqlite", GetParam());
  std::shared_ptr<ADODB::engine::Provider> provider_;
  std::vector<PreviewFailure> failures_;
};

TEST_P(PreviewCopyTest, AFileThatARunWouldMakeIsNotMade) {
  const auto before = FilesBeside();
  const auto session =
      provider_->Connect(ConnectionString::Parse("Data Source=new.sqlite;Mode=ReadWriteCreate"));
  session->Execute("CREATE TABLE T(NAME TEXT)", {});
  session->Execute("INSERT INTO T VALUES('one')", {});
  EXPECT_EQ(FilesBeside(), before);
}

TEST_P(PreviewCopyTest, WhatMayOnlyBeReadIsRead) {
  const auto session = provider_->Connect(ConnectionString::Parse("Data Source=suite.sqlite;Mode=Read"));
  EXPECT_EQ(session->Query("SELECT NAME FROM T", {})->Columns().size(), 1U);
  EXPECT_THAT(ErrorOf([&] { session->Execute("DELETE FROM T", {}); }).Description(),
              HasSubstr("attempt to write a readonly database"));
}

TEST_P(PreviewCopyTest, EveryConnectionSeesWhatOneHasChangedAndTheFileStaysAsItIs) {
  const auto before = FilesBeside();
  {
    const auto one = Connect();
    const auto other = Connect();
    one->Execute("DELETE FROM T WHERE ID = 1", {});
    other->Execute("INSERT INTO T VALUES(3,'three')", {});
    EXPECT_THAT(NamesOf(*one), ElementsAre("two", "three"));
    EXPECT_THAT(NamesOf(*Connect()), ElementsAre("two", "three"));
    EXPECT_THAT(database_->Rows("SELECT NAME FROM T ORDER BY ID"), ElementsAre("one", "two"));
  }
  provider_.reset();
  EXPECT_EQ(FilesBeside(), before);
}

TEST_P(PreviewCopyTest, AClosedDatabaseIsLeftWithoutATrace) {
  database_.reset();
  const auto before = FilesBeside();
  Connect()->Execute("DELETE FROM T", {});
  provider_.reset();
  EXPECT_EQ(FilesBeside(), before);
  EXPECT_FALSE(fs::exists(folder_.Path() / "suite.sqlite-shm"));
}

TEST_P(PreviewCopyTest, LeavesTheLogOfAKilledProgramAsItIs) {
  if (!GetParam()) GTEST_SKIP() << "a rollback journal holds nothing that is committed";
  TemporaryFolder killed;
  for (const char* name : {"suite.sqlite", "suite.sqlite-wal"})
    fs::copy_file(folder_.Path() / name, killed.Path() / name);
  const std::string log = TemporaryFolder::Read(killed.Path() / "suite.sqlite-wal");
  ASSERT_FALSE(log.empty());
  auto provider = ADODB::engine::MakePreviewProvider(
      ADODB::sqlite::MakeCopyProvider(killed.Path(), own_.Path()), {.failed = nullptr, .isCopy = true});
  auto session = provider->Connect(ConnectionString::Parse("Data Source=suite.sqlite"));
  EXPECT_THAT(NamesOf(*session), ElementsAre("one", "two"));
  session->Execute("DELETE FROM T", {});
  session.reset();
  provider.reset();
  EXPECT_TRUE(TemporaryFolder::Read(killed.Path() / "suite.sqlite-wal") == log);
}

TEST_P(PreviewCopyTest, TheCopyHasNoName) {
  const auto session = Connect();
  session->Execute("DELETE FROM T", {});
  EXPECT_TRUE(fs::is_empty(own_.Path()));
}

TEST_P(PreviewCopyTest, OthersReadAndWriteMeanwhile) {
  const auto session = Connect();
  session->Execute("DELETE FROM T WHERE ID = 1", {});
  database_->Run("INSERT INTO T VALUES(9,'nine')");
  EXPECT_THAT(NamesOf(*session), ElementsAre("two"));
  EXPECT_THAT(database_->Rows("SELECT NAME FROM T ORDER BY ID"), ElementsAre("one", "two", "nine"));
}

TEST_P(PreviewCopyTest, RollsBackWhatAConnectionRollsBackOrLeavesOpen) {
  RollBackSomeAndDeleteTheSecond([this] { return Connect(); });
  EXPECT_THAT(NamesOf(*Connect()), ElementsAre("one"));
}

TEST_P(PreviewCopyTest, AFailedStatementFailsAsItWould) {
  const auto session = Connect();
  EXPECT_THROW(session->Execute("INSERT INTO T VALUES(1,'again')", {}), automation::Error);
  EXPECT_THAT(NamesOf(*session), ElementsAre("one", "two"));
  EXPECT_THAT(failures_, IsEmpty());
}

TEST_P(PreviewCopyTest, SaysWhatARunWouldSayOfADatabaseThatIsNotThere) {
  const auto connect = [](ADODB::engine::Provider& provider) {
    try {
      provider.Connect(ConnectionString::Parse("Data Source=missing.sqlite"));
    } catch (const automation::Error& error) {
      return error.Description();
    }
    return std::string();
  };
  const std::string said = connect(*provider_);
  EXPECT_THAT(said, HasSubstr("missing.sqlite"));
  EXPECT_EQ(said, connect(*ADODB::sqlite::MakeProvider(folder_.Path())));
}

TEST_P(PreviewCopyTest, TellsThatTheDiskOfItsCopyIsFull) {
  std::string fill = "BEGIN;";
  for (int i = 10; i < 400; ++i)
    fill += "INSERT INTO T VALUES(" + std::to_string(i) + ",hex(zeroblob(2000)));";
  database_->Run(fill + "COMMIT");
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  const rlimit smallFiles{100'000, before.rlim_max};
  setrlimit(RLIMIT_FSIZE, &smallFiles);
  EXPECT_THROW(Connect(), automation::Error);
  setrlimit(RLIMIT_FSIZE, &before);
  ASSERT_FALSE(failures_.empty());
  EXPECT_EQ(failures_.front().kind, PreviewFailure::Kind::Full);
  EXPECT_TRUE(fs::is_empty(own_.Path()));
}

INSTANTIATE_TEST_SUITE_P(Journals, PreviewCopyTest, testing::Bool(),
                         [](const auto& wal) { return wal.param ? "WriteAheadLog" : "RollbackJournal"; });

}  // namespace
}  // namespace orvane_test
